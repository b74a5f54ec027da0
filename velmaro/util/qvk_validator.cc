#include "velmaro/util/qvk_validator.h"

#include <cstdio>

#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

namespace detail {

std::string describeForBinding(const void* pointer) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "<%p>", pointer);
  return buffer;
}

std::vector<std::string> splitNames(std::string_view names) {
  std::vector<std::string> split;
  std::size_t start = 0;
  for (;;) {
    const auto comma = names.find(',', start);
    split.emplace_back(names.substr(start, comma - start));
    if (comma == std::string_view::npos) break;
    start = comma + 1;
  }
  return split;
}

}  // namespace detail

std::optional<quorvel::platform::Error> QVKValidator::validateValues(
    const VariableBindings& bindings) {
  for (const auto& [name, value] : bindings) {
    std::string message;
    long code = 0;
    if (value.kind == BoundValue::Kind::null) {
      message = StringFormat::format("The %@ is null, validation error", name);
      code = kNull;
    } else if (value.kind == BoundValue::Kind::string && value.text.empty()) {
      message = StringFormat::format("The %@ is an empty string, validation error", name);
      code = kEmptyString;
    } else {
      continue;
    }
    QVKClassicLogger::error(message);
    return quorvel::platform::Error::withDescription(kErrorDomain, code, message);
  }
  return std::nullopt;
}

std::string QVKValidator::describe(const VariableBindings& bindings) {
  std::string text = "{\n";
  for (const auto& [name, value] : bindings) {
    text += "    \"" + name + "\" = ";
    switch (value.kind) {
      case BoundValue::Kind::null:
        text += "<null>";
        break;
      case BoundValue::Kind::string:
        text += "\"" + value.text + "\"";
        break;
      case BoundValue::Kind::other:
        text += value.text;
        break;
    }
    text += ";\n";
  }
  return text + "}";
}

}  // namespace velmaro
