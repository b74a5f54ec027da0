#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/platform/result.h"

namespace quorvel::platform {

struct RegexOptions {
  // '.' also matches line separators (\n, \r, U+2028, ...).
  bool dotMatchesLineSeparators = false;
  bool caseInsensitive = false;
  // Budget for finding one match. The engine counts its own steps, calibrated
  // to roughly a millisecond each, so this is approximate; a call that exceeds
  // it fails with Regex::kTimedOut instead of running on.
  std::chrono::milliseconds timeLimit{250};
  // Bytes of backtracking stack a matching call may use.
  int32_t stackLimit = 1 << 20;
};

// A span of text in UTF-16 code units, the unit in which phone platforms count
// string positions. Positions in the UTF-8 overloads are UTF-16 units too (of
// the UTF-8 text converted to UTF-16) so that both forms agree.
struct Range {
  static constexpr size_t kToEnd = static_cast<size_t>(-1);
  size_t location = 0;
  size_t length = kToEnd;  // kToEnd: up to the end of the text

  static Range whole() { return {}; }
  size_t end() const { return location + length; }
  bool operator==(const Range&) const = default;
};

// A compiled regular expression in the ICU dialect. Immutable once compiled:
// one Regex may be used from several threads at once (each call makes its own
// matcher). Matching never throws; failures (time limit, stack limit, a range
// outside the text) come back as an Error in kErrorDomain.
class Regex {
 public:
  static constexpr const char* kErrorDomain = "quorvel.regex";
  enum Code : long {
    kInvalidPattern = 1,  // compile failure; the description carries ICU's message
    kTimedOut = 2,
    kStackOverflow = 3,
    kRangeOutOfBounds = 4,
    kMatchFailed = 5,  // any other engine failure
  };

  static Result<Regex> compile(std::string_view pattern, RegexOptions options = {});

  const std::string& pattern() const { return pattern_; }
  const RegexOptions& options() const { return options_; }

  // The first match inside `range`, or nothing. With `anchored` the match must
  // start at range.location (it need not reach the range's end); a match later
  // in the range does not count. '^' and '$' match at the range's bounds, and
  // lookaround does not see text outside it.
  Result<std::optional<Range>> firstMatch(std::u16string_view text, Range range = Range::whole(),
                                          bool anchored = false) const;
  Result<std::optional<Range>> firstMatch(std::string_view utf8, Range range = Range::whole(),
                                          bool anchored = false) const;

  // How many non-overlapping matches `range` holds.
  Result<size_t> numberOfMatches(std::u16string_view text, Range range = Range::whole()) const;
  Result<size_t> numberOfMatches(std::string_view utf8, Range range = Range::whole()) const;

  // The matched substrings, in order of appearance.
  Result<std::vector<std::u16string>> matchTexts(std::u16string_view text) const;
  Result<std::vector<std::string>> matchTexts(std::string_view utf8) const;

 private:
  struct Compiled;
  class Matcher;
  Regex(std::string pattern, RegexOptions options, std::shared_ptr<const Compiled> compiled);

  std::string pattern_;
  RegexOptions options_;
  std::shared_ptr<const Compiled> compiled_;
};

}  // namespace quorvel::platform
