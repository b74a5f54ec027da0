#pragma once

#include <cstdint>
#include <optional>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace velmaro {

// A value for one ticket field: what a user entered when creating a request,
// or what the service returns under a request's "custom_fields".
class CustomField {
 public:
  static constexpr const char* kIdNotInt64Warning =
      "Custom field id is not an Int64. Setting id to 0.";

  // JSON null stores no value; booleans stay booleans, so that they are
  // written back as true or false; anything else is kept as it is.
  CustomField(std::int64_t fieldId, std::optional<boost::json::value> value);
  // For callers that hold the id as a JSON number: its signed 64-bit value
  // (fractions truncated, out-of-range values saturated; 0 for a non-number).
  static CustomField initWithFieldId(const boost::json::value& fieldId,
                                     std::optional<boost::json::value> value);
  // {"id": ..., "value": ...}. An "id" that is missing or not a number logs a
  // warning and gives the id 0; the field is still made.
  static CustomField initWithDictionary(const boost::json::object& json);

  std::int64_t fieldId() const { return fieldId_; }
  const std::optional<boost::json::value>& value() const { return value_; }
  void setFieldId(std::int64_t fieldId) { fieldId_ = fieldId; }
  void setValue(std::optional<boost::json::value> value);

  // {"id": fieldId, "value": value}; a field without a value writes null.
  boost::json::object customFieldDictionary() const;

  bool operator==(const CustomField&) const = default;

 private:
  std::int64_t fieldId_;
  std::optional<boost::json::value> value_;
};

using QVKCustomField = CustomField;

}  // namespace velmaro
