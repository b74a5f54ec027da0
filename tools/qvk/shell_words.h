#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quorvel/platform/result.h"

namespace qvk {

// Splits a command line into words the way a POSIX shell does, without
// expansions: blanks separate words; single quotes keep everything literally;
// double quotes keep everything but a backslash before one of $ ` " \ or a
// newline; an unquoted backslash keeps the next character; '' and "" make an
// empty word; a # that begins a word starts a comment. An unterminated quote
// or a trailing backslash is an error.
class ShellWords {
 public:
  static constexpr const char* kErrorDomain = "qvk.shell";
  static constexpr long kUnterminatedQuote = 1;
  static constexpr long kTrailingBackslash = 2;

  static quorvel::platform::Result<std::vector<std::string>> split(std::string_view line);
};

}  // namespace qvk
