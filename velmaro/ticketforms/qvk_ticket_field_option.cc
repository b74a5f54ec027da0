#include "velmaro/ticketforms/qvk_ticket_field_option.h"

#include "velmaro/ticketforms/raw_json.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

QVKTicketFieldOption QVKTicketFieldOption::initWithDictionary(const boost::json::object& json) {
  QVKTicketFieldOption option;
  option.fieldOptionId = RawJson::at(json, "id");
  option.name = RawJson::at(json, "name");
  option.value = RawJson::at(json, "value");
  option.isDefaultValue = JsonValueConversion::boolValue(json, "default");
  return option;
}

}  // namespace velmaro
