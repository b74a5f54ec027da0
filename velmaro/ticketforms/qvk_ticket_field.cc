#include "velmaro/ticketforms/qvk_ticket_field.h"

#include <array>
#include <utility>

#include "velmaro/ticketforms/raw_json.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKTicketField QVKTicketField::initWithDictionary(const boost::json::object& json) {
  QVKTicketField field;
  field.fieldId = RawJson::at(json, "id");
  field.title = RawJson::at(json, "title");
  field.required = J::boolValue(json, "required");
  field.validationRegex = RawJson::at(json, "regexp_for_validation");
  field.fieldDescription = RawJson::at(json, "description");
  field.titleInPortal = RawJson::at(json, "title_in_portal");
  // A missing type, or one that is not text, is no word of the table.
  const auto* type = json.if_contains("type");
  field.type = (type != nullptr && type->is_string()) ? ticketTypeForString(type->get_string())
                                                      : QVKTicketFieldTypeUnknown;
  field.options = parseOptions(json);
  field.systemOptions = parseSystemOptions(json);
  return field;
}

std::vector<QVKTicketFieldOption> QVKTicketField::parseOptions(const boost::json::object& json) {
  return J::parseList(json, "custom_field_options", &QVKTicketFieldOption::initWithDictionary);
}

std::vector<QVKTicketFieldSystemOption> QVKTicketField::parseSystemOptions(
    const boost::json::object& json) {
  return J::parseList(json, "system_field_options",
                      &QVKTicketFieldSystemOption::initWithDictionary);
}

QVKTicketFieldType QVKTicketField::ticketTypeForString(std::string_view type) {
  // In the system's order of comparison.
  static constexpr std::array<std::pair<std::string_view, QVKTicketFieldType>, 15> kTypes{{
      {"subject", QVKTicketFieldTypeSubject},
      {"description", QVKTicketFieldTypeDescription},
      {"text", QVKTicketFieldTypeText},
      {"textarea", QVKTicketFieldTypeTextArea},
      {"regexp", QVKTicketFieldTypeRegexp},
      {"checkbox", QVKTicketFieldTypeCheckbox},
      {"tagger", QVKTicketFieldTypeTagger},
      {"integer", QVKTicketFieldTypeInteger},
      {"decimal", QVKTicketFieldTypeDecimal},
      {"date", QVKTicketFieldTypeDate},
      {"partialcreditcard", QVKTicketFieldTypePartialCreditCard},
      {"priority", QVKTicketFieldTypePriority},
      {"tickettype", QVKTicketFieldTypeTicketType},
      {"status", QVKTicketFieldTypeStatus},
      {"multiselect", QVKTicketFieldTypeMultiselect},
  }};
  for (const auto& [word, code] : kTypes) {
    if (word == type) return code;
  }
  return QVKTicketFieldTypeUnknown;
}

}  // namespace velmaro
