#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"

#include <algorithm>

#include "quorvel/platform/utf16.h"
#include "velmaro/ticketforms/raw_json.h"
#include "velmaro/ticketforms/ticket_field_pattern_cache.h"
#include "velmaro/util/qvk_classic_logger.h"
#include "velmaro/util/qvk_stack.h"

namespace velmaro {
namespace {

using quorvel::platform::Range;
using quorvel::platform::Regex;
using quorvel::platform::Result;
using quorvel::platform::Utf16;

// "\{\d{1,},?\d*\}": an opening brace, one or more digits, an optional comma,
// optional digits, a closing brace. Compiled once for the process.
const Result<Regex>& quantifierRegex() {
  static const auto regex =
      Regex::compile(R"(\{\d{1,},?\d*\})", {.dotMatchesLineSeparators = true});
  return regex;
}

}  // namespace

std::vector<std::int64_t> QVKTicketFormUtilities::limitTicketFormIds(
    const std::vector<std::int64_t>& ids, std::size_t /*maxCount*/) {
  if (ids.size() <= kMaxTicketFormIds) return ids;
  return {ids.begin(), ids.begin() + kMaxTicketFormIds};
}

void QVKTicketFormUtilities::mergeTicketFields(const std::vector<QVKTicketField>& fields,
                                               std::vector<QVKTicketForm>& forms) {
  for (auto& form : forms) fillTicketFields(fields, form);
}

void QVKTicketFormUtilities::fillTicketFields(const std::vector<QVKTicketField>& fields,
                                              QVKTicketForm& form) {
  std::vector<QVKTicketField> ordered;
  if (const auto* ids = RawJson::array(form.ticketFieldsIds)) {
    for (const auto& id : *ids) {
      if (const auto* field = ticketFieldWithId(id, fields)) ordered.push_back(*field);
    }
  }
  form.ticketFields = std::move(ordered);
}

const QVKTicketField* QVKTicketFormUtilities::ticketFieldWithId(
    const boost::json::value& id, const std::vector<QVKTicketField>& list) {
  const auto found = std::find_if(list.begin(), list.end(), [&](const QVKTicketField& field) {
    return field.fieldId && RawJson::numericallyEqual(*field.fieldId, id);
  });
  return found != list.end() ? &*found : nullptr;
}

const QVKTicketField* QVKTicketFormUtilities::ticketFieldWithId(
    std::int64_t id, const std::vector<QVKTicketField>& list) {
  return ticketFieldWithId(boost::json::value(id), list);
}

bool QVKTicketFormUtilities::checkString(std::string_view text, std::string_view pattern) {
  const auto compiled = TicketFieldPatternCache::compiled(pattern);
  if (!compiled->regex) return false;
  const auto match = compiled->regex->firstMatch(text, Range::whole(), /*anchored=*/true);
  if (!match) {
    // The time or stack limit: the text does not pass.
    QVKClassicLogger::d("Ticket field pattern %@ gave up: %@", compiled->regex->pattern(),
                        match.error().localizedDescription());
    return false;
  }
  return match->has_value();
}

bool QVKTicketFormUtilities::checkString(std::string_view text, const QVKTicketField& field) {
  const auto pattern = RawJson::string(field.validationRegex);
  return !pattern || checkString(text, *pattern);
}

std::u16string QVKTicketFormUtilities::cleanRegex(std::u16string_view pattern) {
  // First pass: the positions of the braces to escape. Popping an empty
  // stack gives position 0.
  QVKStack<std::size_t> open;
  QVKStack<std::size_t> close;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == u'{') {
      open.push(i);
    } else if (pattern[i] == u'}') {
      const std::size_t o = open.pop().value_or(0);
      if (!isQuantifierPattern(pattern, Range{o, i - o + 1})) {
        open.push(o);
        close.push(i);
      }
    }
  }
  // Second pass: a backslash before every position on either stack. Marking
  // them first gives the stacks' contains() answer in linear time.
  std::vector<bool> escaped(pattern.size(), false);
  for (const auto position : open.internalArray) escaped[position] = true;
  for (const auto position : close.internalArray) escaped[position] = true;
  std::u16string cleaned;
  cleaned.reserve(pattern.size() + open.internalArray.size() + close.internalArray.size());
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (escaped[i]) cleaned += u'\\';
    cleaned += pattern[i];
  }
  return cleaned;
}

std::string QVKTicketFormUtilities::cleanRegex(std::string_view pattern) {
  return Utf16::toUtf8(cleanRegex(std::u16string_view(Utf16::fromUtf8(pattern))));
}

bool QVKTicketFormUtilities::isQuantifierPattern(std::u16string_view pattern, Range range) {
  const auto& regex = quantifierRegex();
  if (!regex) return false;
  const auto match = regex->firstMatch(pattern, range, /*anchored=*/true);
  return match.ok() && match->has_value();
}

bool QVKTicketFormUtilities::isQuantifierPattern(std::string_view pattern, Range range) {
  return isQuantifierPattern(std::u16string_view(Utf16::fromUtf8(pattern)), range);
}

}  // namespace velmaro
