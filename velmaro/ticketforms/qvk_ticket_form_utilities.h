#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "quorvel/platform/regex.h"
#include "velmaro/ticketforms/qvk_ticket_field.h"
#include "velmaro/ticketforms/qvk_ticket_form.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

// Class operations over ticket forms and their fields. No state of their own
// (the compiled patterns are cached process-wide by TicketFieldPatternCache):
// callable from any thread.
class QVKTicketFormUtilities {
 public:
  // The most ids a form fetch asks for.
  static constexpr std::size_t kMaxTicketFormIds = 5;

  // One record per element of the array under `key`, each made with the
  // record's initWithDictionary (an element that is not an object is read as
  // an empty one), in order. A missing key, or a value that is not an array,
  // gives an empty list.
  template <class Record>
  static std::vector<Record> parseArrayFromDictionary(const boost::json::object& json,
                                                      std::string_view key) {
    return JsonValueConversion::parseList<Record>(json, key, &Record::initWithDictionary);
  }

  // The first 5 ids when there are more, else all of them, in order. The limit
  // is fixed: `maxCount` is ignored (the provider passes 5, so the two agree).
  static std::vector<std::int64_t> limitTicketFormIds(const std::vector<std::int64_t>& ids,
                                                      std::size_t maxCount);

  // fillTicketFields for every form.
  static void mergeTicketFields(const std::vector<QVKTicketField>& fields,
                                std::vector<QVKTicketForm>& forms);
  // Replaces the form's ticketFields with the fields its "ticket_field_ids"
  // name, in that order (not the order of `fields`); ids without a field are
  // skipped, as is everything when the ids are not an array.
  static void fillTicketFields(const std::vector<QVKTicketField>& fields, QVKTicketForm& form);
  // The first field whose fieldId equals the id by numeric value (1 == 1.0),
  // or null. The pointer is into `list`.
  static const QVKTicketField* ticketFieldWithId(const boost::json::value& id,
                                                 const std::vector<QVKTicketField>& list);
  static const QVKTicketField* ticketFieldWithId(std::int64_t id,
                                                 const std::vector<QVKTicketField>& list);

  // checkString:matchesRegularExpression: whether the text (UTF-8) matches the
  // field pattern, cleaned with cleanRegex, with "." matching line separators,
  // anchored at the start of the text (the match need not reach its end unless
  // the pattern says so). False when the cleaned pattern does not compile, or
  // when the match runs into the regular-expression time or stack limit
  // (250 ms, 1 MiB: a hostile pattern cannot hang the caller). Patterns are
  // compiled once per process (TicketFieldPatternCache).
  static bool checkString(std::string_view text, std::string_view pattern);
  // The same with the field's validationRegex as it stands: a pattern that is
  // missing, JSON null or not text is no pattern, and every text passes.
  static bool checkString(std::string_view text, const QVKTicketField& field);

  // Escapes every brace that is not part of a repetition count ("a{2,3}" stays,
  // "{abc}" becomes "\{abc\}"), by the system's two-stack algorithm over UTF-16
  // units, odd cases included: an opening brace never closed is escaped; a
  // closing brace with no opening one pairs with position 0, so "ab}" becomes
  // "\ab\}". Characters beyond 8 bits pass through unchanged. The UTF-8 form
  // reads ill-formed sequences as U+FFFD.
  static std::string cleanRegex(std::string_view pattern);
  static std::u16string cleanRegex(std::u16string_view pattern);

  // isQuantifierPattern:range: whether "\{\d{1,},?\d*\}" (dot-all) matches at
  // the start of `range` (UTF-16 positions), looking only inside it. False for
  // a range outside the pattern. The UTF-8 form counts positions in UTF-16
  // units of the converted text.
  static bool isQuantifierPattern(std::u16string_view pattern, quorvel::platform::Range range);
  static bool isQuantifierPattern(std::string_view pattern, quorvel::platform::Range range);
};

}  // namespace velmaro
