#include "velmaro/ticketforms/qvk_ticket_form.h"

#include "velmaro/ticketforms/raw_json.h"

namespace velmaro {

QVKTicketForm QVKTicketForm::initWithDictionary(const boost::json::object& json) {
  QVKTicketForm form;
  form.formId = RawJson::at(json, "id");
  form.name = RawJson::at(json, "name");
  form.displayName = RawJson::at(json, "display_name");
  form.ticketFieldsIds = RawJson::at(json, "ticket_field_ids");
  return form;
}

std::shared_ptr<QVKTicketForm> QVKTicketForm::createWithDictionary(
    const boost::json::object& json) {
  return std::make_shared<QVKTicketForm>(initWithDictionary(json));
}

}  // namespace velmaro
