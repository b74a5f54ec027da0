#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/optional_text.h"

namespace velmaro {

// How records read the values under their keys. Nothing here fails: a
// missing key or a value of another type gives an absent value, or 0 / false
// for the integer and boolean conversions, which read numbers, booleans and
// numeric text the way a phone platform's integer-value and boolean-value
// conversions do.
class JsonValueConversion {
 public:
  static std::optional<std::string> string(const boost::json::object& json, std::string_view key);
  // The same, copied once, straight into the record's own form.
  static OptionalText text(const boost::json::object& json, std::string_view key);
  // A JSON number kept as a 64-bit number (fractions truncated).
  static std::optional<std::int64_t> number(const boost::json::object& json, std::string_view key);
  // An id: a JSON number in the signed 64-bit range (fractions truncated).
  // One out of that range (2^63, 1e32) is no id rather than the largest one,
  // which would give distinct records the same id; the keyed form logs it as
  // a warning.
  static std::optional<std::int64_t> identifier(const boost::json::object& json,
                                                std::string_view key);
  static std::optional<std::int64_t> identifier(const boost::json::value* value);
  static std::int64_t integerValue(const boost::json::object& json, std::string_view key);
  static std::uint64_t unsignedValue(const boost::json::object& json, std::string_view key);
  static bool boolValue(const boost::json::object& json, std::string_view key);
  // The string elements of an array; other elements are skipped.
  static std::optional<std::vector<std::string>> stringArray(const boost::json::object& json,
                                                             std::string_view key);
  // The decimal text of a number; a string stays as it is.
  static std::optional<std::string> numberText(const boost::json::object& json,
                                               std::string_view key);

  static std::optional<std::int64_t> number(const boost::json::value* value);
  static std::int64_t integerValue(const boost::json::value* value);
  static bool boolValue(const boost::json::value* value);
  static std::optional<std::string> numberText(const boost::json::value* value);

  // The array under `key`, or null when it is missing or not an array.
  static const boost::json::array* array(const boost::json::object& json, std::string_view key);
  // The object under `key`, or an empty one when it is missing or not an object.
  static const boost::json::object& objectAt(const boost::json::object& json, std::string_view key);
  // The value as an object; an empty one when it is not an object.
  static const boost::json::object& asObject(const boost::json::value& value);

  // The records of the array under `key`, one per element in order, each made
  // by `parseOne` (an element that is not an object is read as an empty one);
  // none when the key is missing or not an array.
  template <class Record>
  static std::vector<Record> parseList(const boost::json::object& json, std::string_view key,
                                       Record (*parseOne)(const boost::json::object&)) {
    std::vector<Record> records;
    const auto* elements = array(json, key);
    if (elements == nullptr) return records;
    records.reserve(elements->size());
    for (const auto& element : *elements) records.push_back(parseOne(asObject(element)));
    return records;
  }
};

}  // namespace velmaro
