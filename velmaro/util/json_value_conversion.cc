#include "velmaro/util/json_value_conversion.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include <boost/json/serialize.hpp>

#include "quorvel/core_logger.h"

namespace velmaro {
namespace {

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

// Leading white space, an optional sign, then digits; anything after them is
// ignored and text without digits is 0. Out-of-range text saturates.
std::int64_t integerFromText(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  std::uint64_t magnitude = 0;
  bool overflow = false;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const std::uint64_t digit = static_cast<std::uint64_t>(text[i] - '0');
    if (magnitude > (std::numeric_limits<std::uint64_t>::max() - digit) / 10) overflow = true;
    magnitude = overflow ? magnitude : magnitude * 10 + digit;
  }
  constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (negative) {
    if (overflow || magnitude > kMax) return std::numeric_limits<std::int64_t>::min();
    return -static_cast<std::int64_t>(magnitude);
  }
  if (overflow || magnitude > kMax) return std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(magnitude);
}

// True for text whose first non-blank character (after a sign and leading
// zeros) is Y, y, T, t or a digit 1-9.
bool boolFromText(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isSpace(text[i])) ++i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  while (i < text.size() && text[i] == '0') ++i;
  if (i >= text.size()) return false;
  const char c = text[i];
  return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
}

std::int64_t truncated(double d) {
  if (std::isnan(d)) return 0;
  if (d >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
  if (d <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(d);
}

}  // namespace

std::optional<std::string> JsonValueConversion::string(const boost::json::object& json,
                                                       std::string_view key) {
  const auto* value = json.if_contains(key);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  const auto& s = value->get_string();
  return std::string(s.data(), s.size());
}

OptionalText JsonValueConversion::text(const boost::json::object& json, std::string_view key) {
  const auto* value = json.if_contains(key);
  if (value == nullptr || !value->is_string()) return std::nullopt;
  const auto& s = value->get_string();
  return OptionalText(std::string_view(s.data(), s.size()));
}

std::optional<std::int64_t> JsonValueConversion::number(const boost::json::value* value) {
  if (value == nullptr) return std::nullopt;
  switch (value->kind()) {
    case boost::json::kind::int64:
      return value->get_int64();
    case boost::json::kind::uint64: {
      const auto u = value->get_uint64();
      constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
      return u > kMax ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(u);
    }
    case boost::json::kind::double_:
      return truncated(value->get_double());
    default:
      return std::nullopt;
  }
}

std::optional<std::int64_t> JsonValueConversion::number(const boost::json::object& json,
                                                        std::string_view key) {
  return number(json.if_contains(key));
}

std::optional<std::int64_t> JsonValueConversion::identifier(const boost::json::value* value) {
  if (value == nullptr) return std::nullopt;
  if (value->is_uint64() &&
      value->get_uint64() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
    return std::nullopt;
  }
  // 2^63 is exact as a double; NaN and the infinities fail both tests.
  if (value->is_double() && !(value->get_double() >= -9.2233720368547758e18 &&
                              value->get_double() < 9.2233720368547758e18)) {
    return std::nullopt;
  }
  return number(value);
}

std::optional<std::int64_t> JsonValueConversion::identifier(const boost::json::object& json,
                                                            std::string_view key) {
  const auto* value = json.if_contains(key);
  auto id = identifier(value);
  if (!id && value != nullptr && value->is_number()) {
    quorvel::CoreLogger::warn(
        "An answer's \"" + std::string(key) +
        "\" is out of the 64-bit range and is read as no id: " + boost::json::serialize(*value));
  }
  return id;
}

std::int64_t JsonValueConversion::integerValue(const boost::json::value* value) {
  if (value == nullptr) return 0;
  if (auto n = number(value)) return *n;
  if (value->is_bool()) return value->get_bool() ? 1 : 0;
  if (value->is_string()) {
    const auto& s = value->get_string();
    return integerFromText(std::string_view(s.data(), s.size()));
  }
  return 0;
}

std::int64_t JsonValueConversion::integerValue(const boost::json::object& json,
                                               std::string_view key) {
  return integerValue(json.if_contains(key));
}

std::uint64_t JsonValueConversion::unsignedValue(const boost::json::object& json,
                                                 std::string_view key) {
  const auto* value = json.if_contains(key);
  if (value != nullptr && value->is_uint64()) return value->get_uint64();
  // Negative values wrap, as an unsigned conversion of a signed number does.
  return static_cast<std::uint64_t>(integerValue(value));
}

bool JsonValueConversion::boolValue(const boost::json::value* value) {
  if (value == nullptr) return false;
  switch (value->kind()) {
    case boost::json::kind::bool_:
      return value->get_bool();
    case boost::json::kind::int64:
      return value->get_int64() != 0;
    case boost::json::kind::uint64:
      return value->get_uint64() != 0;
    case boost::json::kind::double_:
      return value->get_double() != 0.0;
    case boost::json::kind::string: {
      const auto& s = value->get_string();
      return boolFromText(std::string_view(s.data(), s.size()));
    }
    default:
      return false;
  }
}

bool JsonValueConversion::boolValue(const boost::json::object& json, std::string_view key) {
  return boolValue(json.if_contains(key));
}

std::optional<std::vector<std::string>> JsonValueConversion::stringArray(
    const boost::json::object& json, std::string_view key) {
  const auto* elements = array(json, key);
  if (elements == nullptr) return std::nullopt;
  std::vector<std::string> strings;
  strings.reserve(elements->size());
  for (const auto& element : *elements) {
    if (element.is_string()) strings.emplace_back(element.get_string());
  }
  return strings;
}

std::optional<std::string> JsonValueConversion::numberText(const boost::json::value* value) {
  if (value == nullptr) return std::nullopt;
  switch (value->kind()) {
    case boost::json::kind::int64:
      return std::to_string(value->get_int64());
    case boost::json::kind::uint64:
      return std::to_string(value->get_uint64());
    case boost::json::kind::double_: {
      const double d = value->get_double();
      char buffer[32];
      // Whole numbers print without a fraction ("1", not "1.0").
      if (std::trunc(d) == d && std::fabs(d) < 1e15) {
        std::snprintf(buffer, sizeof buffer, "%.0f", d);
      } else {
        std::snprintf(buffer, sizeof buffer, "%.15g", d);
      }
      return std::string(buffer);
    }
    case boost::json::kind::bool_:
      return value->get_bool() ? "1" : "0";
    case boost::json::kind::string:
      return std::string(value->get_string());
    default:
      return std::nullopt;
  }
}

std::optional<std::string> JsonValueConversion::numberText(const boost::json::object& json,
                                                           std::string_view key) {
  return numberText(json.if_contains(key));
}

const boost::json::array* JsonValueConversion::array(const boost::json::object& json,
                                                     std::string_view key) {
  const auto* value = json.if_contains(key);
  return (value != nullptr && value->is_array()) ? &value->get_array() : nullptr;
}

const boost::json::object& JsonValueConversion::objectAt(const boost::json::object& json,
                                                         std::string_view key) {
  const auto* value = json.if_contains(key);
  return value != nullptr ? asObject(*value) : asObject(nullptr);
}

const boost::json::object& JsonValueConversion::asObject(const boost::json::value& value) {
  static const boost::json::object kEmpty;
  return value.is_object() ? value.get_object() : kEmpty;
}

}  // namespace velmaro
