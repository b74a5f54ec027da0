// Fuzz target: the ticket-field pattern path on arbitrary patterns and texts.
// The input is a pattern, a zero byte, then the text a user typed (no zero
// byte: all pattern, empty text). Besides the UTF-8 forms, the input's bytes
// are also read as UTF-16 units, so that unpaired surrogates reach the
// cleaner, and its first bytes pick a range for the quantifier test, which
// may lie outside the pattern.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "quorvel/platform/regex.h"
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"

using quorvel::platform::Range;
using velmaro::QVKTicketFormUtilities;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto split = input.find('\0');
  const auto pattern = input.substr(0, split);
  const auto text = split == std::string_view::npos ? std::string_view() : input.substr(split + 1);

  const auto cleaned = QVKTicketFormUtilities::cleanRegex(pattern);
  (void)cleaned;
  (void)QVKTicketFormUtilities::checkString(text, pattern);

  const std::size_t location = size > 0 ? data[0] : 0;
  const std::size_t length = size > 1 ? data[1] : Range::kToEnd;
  (void)QVKTicketFormUtilities::isQuantifierPattern(pattern, Range{location, length});

  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
  const auto cleanedUnits = QVKTicketFormUtilities::cleanRegex(std::u16string_view(units));
  // The cleaner only ever adds backslashes.
  if (cleanedUnits.size() < units.size()) __builtin_trap();
  (void)QVKTicketFormUtilities::isQuantifierPattern(
      std::u16string_view(units), Range{location, std::min<std::size_t>(length, units.size())});
  return 0;
}
