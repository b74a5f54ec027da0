#include "velmaro/requests/custom_field.h"

#include "quorvel/core_logger.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

CustomField::CustomField(std::int64_t fieldId, std::optional<boost::json::value> value)
    : fieldId_(fieldId) {
  setValue(std::move(value));
}

void CustomField::setValue(std::optional<boost::json::value> value) {
  if (value && value->is_null()) value.reset();
  // A value read from an answer lives in that answer's parse arena, which is
  // gone once the answer is handled: the field keeps its own copy. (Assigning
  // a JSON value keeps the target's storage, hence the emplace.)
  value_.reset();
  if (value) value_.emplace(std::move(*value), boost::json::storage_ptr());
}

CustomField CustomField::initWithFieldId(const boost::json::value& fieldId,
                                         std::optional<boost::json::value> value) {
  return {JsonValueConversion::identifier(&fieldId).value_or(0), std::move(value)};
}

CustomField CustomField::initWithDictionary(const boost::json::object& json) {
  const auto* id = json.if_contains("id");
  std::optional<std::int64_t> fieldId;
  if (id != nullptr && id->is_number()) fieldId = JsonValueConversion::identifier(id);
  if (!fieldId) quorvel::CoreLogger::warn(kIdNotInt64Warning);
  std::optional<boost::json::value> value;
  if (const auto* v = json.if_contains("value")) value = *v;
  return {fieldId.value_or(0), std::move(value)};
}

boost::json::object CustomField::customFieldDictionary() const {
  return {{"id", fieldId_}, {"value", value_ ? *value_ : boost::json::value(nullptr)}};
}

}  // namespace velmaro
