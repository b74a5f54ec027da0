#include "quorvel/platform/duration_formatter.h"

#include <array>

#include <unicode/fieldpos.h>
#include <unicode/locid.h>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>

namespace quorvel::platform {

std::string DurationFormatter::formatMinutesSeconds(std::chrono::seconds duration,
                                                    std::string_view localeTag) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale locale =
      localeTag.empty() ? icu::Locale::getDefault()
                        : icu::Locale::forLanguageTag(
                              icu::StringPiece(localeTag.data(), localeTag.size()), status);
  // ICU would put a sign on each measure; a negative duration gets one in front.
  if (duration.count() < 0) return "-" + formatMinutesSeconds(-duration, localeTag);
  const auto total = duration.count();
  const auto minutes = total / 60;
  const auto seconds = total % 60;
  // The numeric width writes the measures as a clock would ("59:58"); ICU
  // owns the units, so they are created first and adopted by the measures.
  std::array<icu::Measure, 2> measures = {
      icu::Measure(icu::Formattable(static_cast<int64_t>(minutes)),
                   icu::MeasureUnit::createMinute(status), status),
      icu::Measure(icu::Formattable(static_cast<int64_t>(seconds)),
                   icu::MeasureUnit::createSecond(status), status),
  };
  icu::MeasureFormat format(locale, UMEASFMT_WIDTH_NUMERIC, status);
  icu::UnicodeString out;
  icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
  format.formatMeasures(measures.data(), static_cast<int32_t>(measures.size()), out, position,
                        status);
  std::string text;
  if (U_FAILURE(status)) {
    // Cannot happen with ICU's own data; fall back to the same shape by hand.
    text = std::to_string(minutes) + (seconds < 10 ? ":0" : ":") + std::to_string(seconds);
    return text;
  }
  out.toUTF8String(text);
  return text;
}

}  // namespace quorvel::platform
