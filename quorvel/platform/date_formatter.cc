#include "quorvel/platform/date_formatter.h"

#include <cmath>

#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace quorvel::platform {

struct DateFormatter::Impl {
  std::unique_ptr<icu::SimpleDateFormat> format;
};

namespace {

icu::UnicodeString fromUtf8(std::string_view text) {
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), text.size()));
}

std::string toUtf8(const icu::UnicodeString& text) {
  std::string out;
  text.toUTF8String(out);
  return out;
}

// A non-lenient formatter for `pattern`, or nothing when ICU rejects it.
std::unique_ptr<icu::SimpleDateFormat> makeFormat(const std::string& pattern,
                                                  const icu::Locale& locale, icu::TimeZone* zone) {
  std::unique_ptr<icu::TimeZone> ownedZone(zone);
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(fromUtf8(pattern), locale, status);
  if (U_FAILURE(status) || ownedZone == nullptr) return nullptr;
  format->adoptTimeZone(ownedZone.release());
  // Strict: no partial literals, no spare white space, no field overflow
  // (February 30th is an error, not March 2nd).
  format->setLenient(false);
  // Non-lenient still forgives a missing trailing literal or extra white
  // space; wire dates must match the pattern character for character.
  format->setBooleanAttribute(UDAT_PARSE_ALLOW_WHITESPACE, false, status);
  format->setBooleanAttribute(UDAT_PARSE_ALLOW_NUMERIC, false, status);
  format->setBooleanAttribute(UDAT_PARSE_PARTIAL_LITERAL_MATCH, false, status);
  format->setBooleanAttribute(UDAT_PARSE_MULTIPLE_PATTERNS_FOR_MATCH, false, status);
  if (U_FAILURE(status)) return nullptr;
  return format;
}

// The locale's pattern for a template of date components; empty on failure.
std::string bestPatternFor(std::string_view skeleton, const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(locale, status));
  if (U_FAILURE(status)) return {};
  const auto pattern = generator->getBestPattern(fromUtf8(skeleton), status);
  if (U_FAILURE(status)) return {};
  return toUtf8(pattern);
}

// The literal text after the pattern's last field ("Z" for
// "yyyy-MM-dd'T'HH:mm:ss'Z'"). Quotes delimit literals; '' is a quote.
std::string trailingLiteral(std::string_view pattern) {
  std::string literal;
  bool quoted = false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (c == '\'') {
      if (i + 1 < pattern.size() && pattern[i + 1] == '\'') {
        literal += '\'';
        ++i;
      } else {
        quoted = !quoted;
      }
    } else if (!quoted && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))) {
      literal.clear();
    } else {
      literal += c;
    }
  }
  return literal;
}

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// ICU, even when not lenient, skips white space before the text and accepts
// a text that ends inside the pattern's closing literal. Both are refused.
bool withinPatternBounds(std::string_view text, std::string_view pattern) {
  if (!text.empty() && isSpace(text.front()) && (pattern.empty() || !isSpace(pattern.front()))) {
    return false;
  }
  return text.ends_with(trailingLiteral(pattern));
}

}  // namespace

DateFormatter::DateFormatter(std::string pattern, std::unique_ptr<Impl> impl)
    : pattern_(std::move(pattern)), impl_(std::move(impl)) {}
DateFormatter::DateFormatter(DateFormatter&&) noexcept = default;
DateFormatter& DateFormatter::operator=(DateFormatter&&) noexcept = default;
DateFormatter::~DateFormatter() = default;

DateFormatter DateFormatter::fixed(std::string pattern) {
  // The POSIX locale keeps digits ASCII, the calendar Gregorian and month
  // names English whatever the user chose, so wire dates read back the same.
  static const icu::Locale posix("en_US_POSIX");
  auto format = makeFormat(pattern, posix, icu::TimeZone::createTimeZone("GMT"));
  if (!format) return DateFormatter(std::move(pattern), nullptr);
  return DateFormatter(std::move(pattern), std::make_unique<Impl>(Impl{std::move(format)}));
}

DateFormatter DateFormatter::fromTemplate(std::string skeleton) {
  const icu::Locale& locale = icu::Locale::getDefault();
  auto pattern = bestPatternFor(skeleton, locale);
  if (pattern.empty()) return DateFormatter(std::move(skeleton), nullptr);
  auto format = makeFormat(pattern, locale, icu::TimeZone::createDefault());
  if (!format) return DateFormatter(std::move(pattern), nullptr);
  return DateFormatter(std::move(pattern), std::make_unique<Impl>(Impl{std::move(format)}));
}

std::string DateFormatter::bestPattern(std::string_view skeleton, std::string_view localeTag) {
  UErrorCode status = U_ZERO_ERROR;
  const auto locale =
      icu::Locale::forLanguageTag(icu::StringPiece(localeTag.data(), localeTag.size()), status);
  if (U_FAILURE(status)) return {};
  return bestPatternFor(skeleton, locale);
}

std::optional<DateFormatter::TimePoint> DateFormatter::parse(std::string_view text) const {
  if (!impl_ || !withinPatternBounds(text, pattern_)) return std::nullopt;
  const auto source = fromUtf8(text);
  icu::ParsePosition position(0);
  const UDate millis = impl_->format->parse(source, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != source.length()) return std::nullopt;
  // A time point counts 64-bit nanoseconds (years 1678 to 2261); a date
  // outside that is not a time the caller can hold.
  if (!(millis > -9223372036000.0 && millis < 9223372036000.0)) return std::nullopt;
  const std::chrono::duration<double, std::milli> since1970(millis);
  return TimePoint(std::chrono::round<TimePoint::duration>(since1970));
}

std::string DateFormatter::format(TimePoint time) const {
  if (!impl_) return {};
  const auto millis =
      std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
  icu::UnicodeString out;
  impl_->format->format(static_cast<UDate>(millis), out);
  return toUtf8(out);
}

}  // namespace quorvel::platform
