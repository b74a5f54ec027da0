#include "tools/qvk/terminal_text.h"

namespace qvk {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

}  // namespace

std::string TerminalText::printable(std::string_view text, bool keepLineFeeds) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // C1 controls are two bytes in UTF-8: 0xC2 then 0x80-0x9F.
    const bool c1 = byte == 0xC2 && i + 1 < text.size() &&
                    (static_cast<unsigned char>(text[i + 1]) & 0xE0) == 0x80;
    if (text[i] == '\n' && keepLineFeeds) {
      out += '\n';
    } else if (text[i] == '\n' || text[i] == '\r' || text[i] == '\t') {
      out += ' ';
    } else if (byte < 0x20 || byte == 0x7F || c1) {
      out += kReplacement;
      if (c1) ++i;
    } else {
      out += text[i];
    }
  }
  return out;
}

}  // namespace qvk
