#pragma once

#include <string_view>

namespace quorvel::platform {

// Orders UTF-8 text the way a phone platform's case-insensitive compare does:
// both sides are case-folded (full Unicode folding, so "É" equals "é" and "ß"
// equals "ss") and then compared UTF-16 code unit by code unit; no locale
// collation. Safe from any thread.
class TextComparison {
 public:
  // Negative, zero or positive as `a` sorts before, with or after `b`.
  static int caseInsensitiveCompare(std::string_view a, std::string_view b);
};

}  // namespace quorvel::platform
