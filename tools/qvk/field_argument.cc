#include "tools/qvk/field_argument.h"

#include <charconv>
#include <cstdint>

#include <boost/json/parse.hpp>

namespace qvk {

std::optional<velmaro::CustomField> FieldArgument::parse(std::string_view text) {
  const auto equals = text.find('=');
  if (equals == std::string_view::npos || equals == 0) return std::nullopt;
  const auto idText = text.substr(0, equals);
  std::int64_t id = 0;
  const auto [end, error] = std::from_chars(idText.data(), idText.data() + idText.size(), id);
  if (error != std::errc() || end != idText.data() + idText.size()) return std::nullopt;
  const auto valueText = text.substr(equals + 1);
  boost::system::error_code parseError;
  auto value = boost::json::parse(valueText, parseError);
  if (parseError) value = boost::json::string(valueText);
  // CustomField itself stores JSON null as no value.
  return velmaro::CustomField(id, std::move(value));
}

std::string FieldArgument::check(const std::string& text) {
  if (parse(text)) return {};
  return "expected ID=VALUE with a numeric ID: " + text;
}

}  // namespace qvk
