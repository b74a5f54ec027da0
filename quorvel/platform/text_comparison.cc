#include "quorvel/platform/text_comparison.h"

#include <algorithm>

#include <unicode/stringoptions.h>
#include <unicode/unistr.h>

namespace quorvel::platform {

namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

unsigned char foldAscii(char c) {
  return static_cast<unsigned char>((c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c);
}

// Most names are plain ASCII; they skip the conversion to UTF-16.
int compareAscii(std::string_view a, std::string_view b) {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const auto x = foldAscii(a[i]);
    const auto y = foldAscii(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

}  // namespace

int TextComparison::caseInsensitiveCompare(std::string_view a, std::string_view b) {
  if (isAscii(a) && isAscii(b)) return compareAscii(a, b);
  const auto left = icu::UnicodeString::fromUTF8(icu::StringPiece(a.data(), a.size()));
  const auto right = icu::UnicodeString::fromUTF8(icu::StringPiece(b.data(), b.size()));
  const int8_t order = left.caseCompare(right, U_FOLD_CASE_DEFAULT);
  return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

}  // namespace quorvel::platform
