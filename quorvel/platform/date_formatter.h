#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::platform {

// Parses and formats dates with an ICU date pattern ("yyyy-MM-dd'T'HH:mm:ss'Z'").
//
// Not thread-safe: a DateFormatter carries parse state, so each thread keeps
// its own (the library caches one per pattern and thread). Moving it to another
// thread is fine; using it from two at once is not.
class DateFormatter {
 public:
  using TimePoint = std::chrono::system_clock::time_point;

  // A machine-independent formatter: the pattern as given, UTC ("GMT"),
  // locale "en_US_POSIX", strict parsing of the whole text. For wire formats.
  static DateFormatter fixed(std::string pattern);

  // A formatter for the user: the template of date components ("MMMd", "jmm")
  // becomes the current locale's pattern for them, in the system time zone.
  // The current locale is ICU's default locale (from the process environment
  // unless the host set another).
  static DateFormatter fromTemplate(std::string skeleton);

  // The locale's best pattern for a template, e.g. ("MMMd", "de") -> "d. MMM".
  // Empty when the template or locale cannot be used.
  static std::string bestPattern(std::string_view skeleton, std::string_view localeTag);

  DateFormatter(DateFormatter&&) noexcept;
  DateFormatter& operator=(DateFormatter&&) noexcept;
  ~DateFormatter();

  // The whole text must match the pattern; anything else gives nothing.
  std::optional<TimePoint> parse(std::string_view text) const;
  // Empty when the formatter is not valid().
  std::string format(TimePoint time) const;

  // The pattern in use (for fromTemplate(), the generated one).
  const std::string& pattern() const { return pattern_; }
  // False when ICU could not make a formatter. ICU accepts any pattern text,
  // so this is about resources, not about the pattern.
  bool valid() const { return impl_ != nullptr; }

 private:
  struct Impl;
  DateFormatter(std::string pattern, std::unique_ptr<Impl> impl);

  std::string pattern_;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quorvel::platform
