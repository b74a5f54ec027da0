#pragma once

#include <string>
#include <string_view>

namespace qvk {

// Text from the service on its way to a terminal. A name or body may hold
// escape sequences, BEL or NUL that would move the cursor, retitle the
// window or hide what follows, so every control character is replaced before
// it is printed.
class TerminalText {
 public:
  // C0 controls, DEL and C1 controls (U+0080-U+009F in UTF-8) become U+FFFD;
  // tabs and line breaks become a space, except line feeds when
  // `keepLineFeeds` (a body printed over several lines).
  static std::string printable(std::string_view text, bool keepLineFeeds = false);
};

}  // namespace qvk
