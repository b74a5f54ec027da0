#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/ticketforms/qvk_ticket_field_option.h"
#include "velmaro/ticketforms/qvk_ticket_field_system_option.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// The field type codes. The numbering is the system's (not the order in which
// ticketTypeForString compares the words) and must not change.
enum QVKTicketFieldType : std::uint64_t {
  QVKTicketFieldTypeSubject = 0,
  QVKTicketFieldTypeDescription = 1,
  QVKTicketFieldTypeRegexp = 2,
  QVKTicketFieldTypeTextArea = 3,
  QVKTicketFieldTypeText = 4,
  QVKTicketFieldTypeCheckbox = 5,
  QVKTicketFieldTypeTagger = 6,
  QVKTicketFieldTypeInteger = 7,
  QVKTicketFieldTypeDecimal = 8,
  QVKTicketFieldTypeDate = 9,
  QVKTicketFieldTypePartialCreditCard = 10,
  QVKTicketFieldTypePriority = 11,
  QVKTicketFieldTypeStatus = 12,
  QVKTicketFieldTypeTicketType = 13,
  QVKTicketFieldTypeMultiselect = 14,
  // All bits set: -1 when read as signed.
  QVKTicketFieldTypeUnknown = std::numeric_limits<std::uint64_t>::max(),
};

// One field of a ticket form: what the user fills, with its options and
// validation pattern. Values are kept as the dictionary held them (see
// RawJson): "regexp_for_validation": null stays null, which the pattern check
// reads as no pattern.
//
// The system declares this record dictionary-creatable but gives it no
// createWithDictionary; it is always made with initWithDictionary, and the
// gap is kept.
struct QVKTicketField {
  std::optional<boost::json::value> fieldId;            // "id", a number
  std::optional<boost::json::value> title;              // "title"
  bool required = false;                                // "required"; false when missing
  std::optional<boost::json::value> validationRegex;    // "regexp_for_validation", the raw pattern
  std::optional<boost::json::value> fieldDescription;   // "description"
  std::optional<boost::json::value> titleInPortal;      // "title_in_portal"
  QVKTicketFieldType type = QVKTicketFieldTypeUnknown;  // "type", by ticketTypeForString
  std::vector<QVKTicketFieldOption> options;            // "custom_field_options"
  std::vector<QVKTicketFieldSystemOption> systemOptions;  // "system_field_options"

  static QVKTicketField initWithDictionary(const boost::json::object& json);
  // One option per element of the field's "custom_field_options", in server
  // order; none when the key is missing or not an array.
  static std::vector<QVKTicketFieldOption> parseOptions(const boost::json::object& json);
  // The same with "system_field_options".
  static std::vector<QVKTicketFieldSystemOption> parseSystemOptions(
      const boost::json::object& json);
  // The code of the type word, compared exactly and case-sensitively; the
  // unknown code for any other word.
  static QVKTicketFieldType ticketTypeForString(std::string_view type);
};

BOOST_DESCRIBE_STRUCT(QVKTicketField, (),
                      (fieldId, title, required, validationRegex, fieldDescription, titleInPortal,
                       type, options, systemOptions))

// The code as its number.
inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       QVKTicketFieldType type) {
  json = static_cast<std::uint64_t>(type);
}

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKTicketField& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
