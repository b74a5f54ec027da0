#include "quorvel/platform/regex.h"

#include <algorithm>
#include <climits>

#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utypes.h>

#include "quorvel/platform/utf16.h"

namespace quorvel::platform {

struct Regex::Compiled {
  std::unique_ptr<icu::RegexPattern> pattern;
};

namespace {

Error errorFor(Regex::Code code, std::string message, UErrorCode status) {
  auto error = Error::withDescription(Regex::kErrorDomain, code, std::move(message));
  error.userInfo["icuError"] = u_errorName(status);
  return error;
}

Error matchError(UErrorCode status) {
  switch (status) {
    case U_REGEX_TIME_OUT:
      return errorFor(Regex::kTimedOut, "The regular expression took too long to match.", status);
    case U_REGEX_STACK_OVERFLOW:
      return errorFor(Regex::kStackOverflow, "The regular expression ran out of stack.", status);
    default:
      return errorFor(Regex::kMatchFailed,
                      std::string("The regular expression failed: ") + u_errorName(status), status);
  }
}

// The range with kToEnd resolved, or nothing when it leaves the text.
std::optional<Range> resolve(Range range, size_t textLength) {
  if (range.location > textLength) return std::nullopt;
  if (range.length == Range::kToEnd) return Range{range.location, textLength - range.location};
  if (range.length > textLength - range.location) return std::nullopt;
  return range;
}

Error outOfBounds() {
  return Error::withDescription(Regex::kErrorDomain, Regex::kRangeOutOfBounds,
                                "The range lies outside the text.");
}

}  // namespace

// One matching session over one text and range. The ICU matcher keeps a
// reference to its input, so the input alias lives here beside it.
class Regex::Matcher {
 public:
  Matcher(const Regex& regex, std::u16string_view text, Range range)
      : input_(false, text.data(), static_cast<int32_t>(text.size())) {
    matcher_.reset(regex.compiled_->pattern->matcher(input_, status_));
    if (U_FAILURE(status_)) return;
    const auto ms = regex.options_.timeLimit.count();
    matcher_->setTimeLimit(static_cast<int32_t>(std::clamp<decltype(ms)>(ms, 1, INT32_MAX)),
                           status_);
    matcher_->setStackLimit(regex.options_.stackLimit, status_);
    matcher_->region(static_cast<int64_t>(range.location), static_cast<int64_t>(range.end()),
                     status_);
  }

  // Next match, nothing at the end, or an error.
  Result<std::optional<Range>> next(bool anchored) {
    if (U_FAILURE(status_)) return matchError(status_);
    const bool found = anchored ? matcher_->lookingAt(status_) : matcher_->find(status_);
    if (U_FAILURE(status_)) return matchError(status_);
    if (!found) return std::optional<Range>();
    const auto start = matcher_->start(status_);
    const auto end = matcher_->end(status_);
    return std::optional<Range>(
        Range{static_cast<size_t>(start), static_cast<size_t>(end - start)});
  }

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  icu::UnicodeString input_;
  std::unique_ptr<icu::RegexMatcher> matcher_;
};

Regex::Regex(std::string pattern, RegexOptions options, std::shared_ptr<const Compiled> compiled)
    : pattern_(std::move(pattern)), options_(options), compiled_(std::move(compiled)) {}

Result<Regex> Regex::compile(std::string_view pattern, RegexOptions options) {
  uint32_t flags = 0;
  if (options.dotMatchesLineSeparators) flags |= UREGEX_DOTALL;
  if (options.caseInsensitive) flags |= UREGEX_CASE_INSENSITIVE;
  UParseError where{};
  UErrorCode status = U_ZERO_ERROR;
  const auto source =
      icu::UnicodeString::fromUTF8(icu::StringPiece(pattern.data(), pattern.size()));
  auto compiled = std::make_shared<Compiled>();
  compiled->pattern.reset(icu::RegexPattern::compile(source, flags, where, status));
  if (U_FAILURE(status)) {
    auto message = std::string("Invalid regular expression (") + u_errorName(status) +
                   ") at offset " + std::to_string(where.offset);
    auto error = errorFor(kInvalidPattern, std::move(message), status);
    error.userInfo["offset"] = where.offset;
    return error;
  }
  return Regex(std::string(pattern), options, std::move(compiled));
}

Result<std::optional<Range>> Regex::firstMatch(std::u16string_view text, Range range,
                                               bool anchored) const {
  const auto bounds = resolve(range, text.size());
  if (!bounds) return outOfBounds();
  Matcher matcher(*this, text, *bounds);
  return matcher.next(anchored);
}

Result<std::optional<Range>> Regex::firstMatch(std::string_view utf8, Range range,
                                               bool anchored) const {
  return firstMatch(std::u16string_view(Utf16::fromUtf8(utf8)), range, anchored);
}

Result<size_t> Regex::numberOfMatches(std::u16string_view text, Range range) const {
  const auto bounds = resolve(range, text.size());
  if (!bounds) return outOfBounds();
  Matcher matcher(*this, text, *bounds);
  size_t count = 0;
  for (;;) {
    auto match = matcher.next(false);
    if (!match) return match.error();
    if (!*match) return count;
    ++count;
  }
}

Result<size_t> Regex::numberOfMatches(std::string_view utf8, Range range) const {
  return numberOfMatches(std::u16string_view(Utf16::fromUtf8(utf8)), range);
}

Result<std::vector<std::u16string>> Regex::matchTexts(std::u16string_view text) const {
  Matcher matcher(*this, text, Range{0, text.size()});
  std::vector<std::u16string> texts;
  for (;;) {
    auto match = matcher.next(false);
    if (!match) return match.error();
    if (!*match) return texts;
    texts.emplace_back(text.substr((*match)->location, (*match)->length));
  }
}

Result<std::vector<std::string>> Regex::matchTexts(std::string_view utf8) const {
  const auto text = Utf16::fromUtf8(utf8);
  auto matches = matchTexts(std::u16string_view(text));
  if (!matches) return matches.error();
  std::vector<std::string> out;
  out.reserve(matches->size());
  for (const auto& m : *matches) out.push_back(Utf16::toUtf8(m));
  return out;
}

}  // namespace quorvel::platform
