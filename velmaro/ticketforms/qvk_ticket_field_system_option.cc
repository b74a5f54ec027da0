#include "velmaro/ticketforms/qvk_ticket_field_system_option.h"

#include "velmaro/ticketforms/raw_json.h"

namespace velmaro {

QVKTicketFieldSystemOption QVKTicketFieldSystemOption::initWithDictionary(
    const boost::json::object& json) {
  QVKTicketFieldSystemOption option;
  option.name = RawJson::at(json, "name");
  option.value = RawJson::at(json, "value");
  return option;
}

}  // namespace velmaro
