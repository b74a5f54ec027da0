#include "quorvel/platform/utf16.h"

#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace quorvel::platform {

std::u16string Utf16::fromUtf8(std::string_view utf8) {
  const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(utf8.data(), utf8.size()));
  return std::u16string(text.getBuffer(), static_cast<size_t>(text.length()));
}

std::string Utf16::toUtf8(std::u16string_view utf16) {
  // Read-only alias: no copy of the input.
  const icu::UnicodeString text(false, utf16.data(), static_cast<int32_t>(utf16.size()));
  std::string out;
  text.toUTF8String(out);
  return out;
}

bool Utf16::isValidUtf8(std::string_view bytes) {
  const auto* s = reinterpret_cast<const uint8_t*>(bytes.data());
  const auto length = static_cast<int64_t>(bytes.size());
  int64_t i = 0;
  while (i < length) {
    UChar32 c = 0;
    U8_NEXT(s, i, length, c);
    if (c < 0) return false;
  }
  return true;
}

}  // namespace quorvel::platform
