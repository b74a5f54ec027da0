#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace velmaro {

// How the ticket-form records keep their values: as the dictionary held them,
// without the cleaning step of the request records. Each property is a
// std::optional<boost::json::value>: empty when the key was missing, JSON null
// when the key held null, else the value of whatever kind it was (a "name"
// that arrives as a number stays a number). The typed reads below answer only
// when the kind is the one asked for, so a null is never read as text and a
// wrong kind never crashes.
class RawJson {
 public:
  using Value = std::optional<boost::json::value>;

  // The value under `key`, copied onto the heap (it outlives the answer's
  // parse arena); empty when the key is missing.
  static Value at(const boost::json::object& json, std::string_view key);

  // The key held JSON null.
  static bool isNull(const Value& value) { return value && value->is_null(); }
  // The text, only when the value is a JSON string. It points into the value,
  // so a temporary value is refused.
  static std::optional<std::string_view> string(const Value& value);
  static std::optional<std::string_view> string(Value&&) = delete;
  // The number, only when the value is a JSON number with an exact 64-bit
  // integer value (7, 7.0; not 7.5, 1e300, 2^63 or "7").
  static std::optional<std::int64_t> int64(const Value& value);
  static std::optional<std::int64_t> int64(const boost::json::value& value);
  // The elements, only when the value is a JSON array; null otherwise.
  static const boost::json::array* array(const Value& value);
  static const boost::json::array* array(Value&&) = delete;

  // Whether both are JSON numbers of the same numeric value, whatever their
  // representation (1, 1.0 and an unsigned 1 are one number). Anything that is
  // not a number equals nothing.
  static bool numericallyEqual(const boost::json::value& a, const boost::json::value& b);
};

}  // namespace velmaro
