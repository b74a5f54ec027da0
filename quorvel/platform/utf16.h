#pragma once

#include <string>
#include <string_view>

namespace quorvel::platform {

// Conversions between the UTF-8 the library stores and the UTF-16 code units
// in which text positions are counted (regular expressions, ranges).
class Utf16 {
 public:
  // Ill-formed UTF-8 sequences become U+FFFD.
  static std::u16string fromUtf8(std::string_view utf8);
  // Unpaired surrogates become U+FFFD.
  static std::string toUtf8(std::u16string_view utf16);
  // Whether `bytes` is well-formed UTF-8 (no overlong forms, no surrogates).
  static bool isValidUtf8(std::string_view bytes);
};

}  // namespace quorvel::platform
