#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/ticketforms/qvk_ticket_field.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// A server-defined layout for a new request: its fields in the order the user
// fills them. Values are kept as the dictionary held them (see RawJson).
//
// A fetched form is shared: the request provider answers
// std::shared_ptr<const QVKTicketForm>, and the form cache
// (QVKTicketFormsProviderCacher) holds those very objects.
struct QVKTicketForm {
  std::optional<boost::json::value> formId;       // "id", a number
  std::optional<boost::json::value> name;         // "name"
  std::optional<boost::json::value> displayName;  // "display_name"
  std::optional<boost::json::value>
      ticketFieldsIds;  // "ticket_field_ids": the order of the fields on the form
  // Not in the form's JSON: filled by QVKTicketFormUtilities::mergeTicketFields.
  std::vector<QVKTicketField> ticketFields;

  // ticketFields starts empty.
  static QVKTicketForm initWithDictionary(const boost::json::object& json);
  // The same form, made to be shared (QVKDictionaryCreatable).
  static std::shared_ptr<QVKTicketForm> createWithDictionary(const boost::json::object& json);
};

BOOST_DESCRIBE_STRUCT(QVKTicketForm, (), (formId, name, displayName, ticketFieldsIds, ticketFields))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKTicketForm& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
