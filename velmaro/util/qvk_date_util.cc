#include "velmaro/util/qvk_date_util.h"

#include <cmath>
#include <cstdio>

namespace velmaro {
namespace {

using namespace std::chrono;
using quorvel::platform::DateFormatter;

// The wire format is by far the most common: it is read and written without
// ICU when the text has exactly its shape. Anything else (other digit counts,
// out-of-range fields) goes to the formatter, so both paths agree.
// Seconds since 1970 that a system_clock time point (64-bit nanoseconds) holds.
bool fitsTimePoint(double seconds) {
  return std::isfinite(seconds) && seconds > -9223372036.0 && seconds < 9223372036.0;
}

bool twoDigits(std::string_view text, std::size_t at, int& out) {
  const char a = text[at];
  const char b = text[at + 1];
  if (a < '0' || a > '9' || b < '0' || b > '9') return false;
  out = (a - '0') * 10 + (b - '0');
  return true;
}

std::optional<QVKDateUtil::TimePoint> parseWireFast(std::string_view text) {
  if (text.size() != 20 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[13] != ':' ||
      text[16] != ':' || text[19] != 'Z') {
    return std::nullopt;
  }
  int y1 = 0, y2 = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  if (!twoDigits(text, 0, y1) || !twoDigits(text, 2, y2) || !twoDigits(text, 5, mo) ||
      !twoDigits(text, 8, d) || !twoDigits(text, 11, h) || !twoDigits(text, 14, mi) ||
      !twoDigits(text, 17, s)) {
    return std::nullopt;
  }
  const year_month_day date{year{y1 * 100 + y2}, month{static_cast<unsigned>(mo)},
                            day{static_cast<unsigned>(d)}};
  if (!date.ok() || h > 23 || mi > 59 || s > 59) return std::nullopt;
  const sys_seconds moment = sys_days{date} + hours{h} + minutes{mi} + seconds{s};
  // A time point counts nanoseconds: years before 1678 or after 2261 do not fit.
  if (!fitsTimePoint(static_cast<double>(moment.time_since_epoch().count()))) return std::nullopt;
  return moment;
}

std::optional<std::string> formatWireFast(QVKDateUtil::TimePoint date) {
  const auto secs = floor<seconds>(date);
  const auto dayStart = floor<days>(secs);
  const year_month_day ymd{dayStart};
  const int y = static_cast<int>(ymd.year());
  if (y < 0 || y > 9999) return std::nullopt;
  const hh_mm_ss<seconds> time{secs - dayStart};
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02uT%02d:%02d:%02dZ", y,
                static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return std::string(buffer);
}

}  // namespace

double QVKDateUtil::dateAsNumber(TimePoint date) {
  return duration<double>(date.time_since_epoch()).count();
}

QVKDateUtil::TimePoint QVKDateUtil::dateFromNumber(double seconds) {
  if (!std::isfinite(seconds)) return TimePoint{};
  if (!fitsTimePoint(seconds)) return seconds < 0 ? TimePoint::min() : TimePoint::max();
  return TimePoint{duration_cast<system_clock::duration>(duration<double>(seconds))};
}

std::optional<QVKDateUtil::TimePoint> QVKDateUtil::dateForJsonString(
    const boost::json::value* value) {
  if (value == nullptr || !value->is_string()) return std::nullopt;
  const auto& text = value->get_string();
  return dateForJsonString(std::string_view(text.data(), text.size()));
}

std::optional<QVKDateUtil::TimePoint> QVKDateUtil::dateForJsonString(std::string_view text) {
  return dateFromString(text, kJsonDateFormat);
}

std::optional<QVKDateUtil::TimePoint> QVKDateUtil::dateFromString(std::string_view text,
                                                                  std::string_view format) {
  if (format == kJsonDateFormat) {
    if (auto fast = parseWireFast(text)) return fast;
  }
  return formatterForFormat(format).parse(text);
}

std::string QVKDateUtil::stringFromDate(TimePoint date) {
  return stringFromDate(date, kJsonDateFormat);
}

std::string QVKDateUtil::stringFromDate(TimePoint date, std::string_view format) {
  if (format == kJsonDateFormat) {
    if (auto fast = formatWireFast(date)) return *fast;
  }
  return formatterForFormat(format).format(date);
}

DateFormatter& QVKDateUtil::formatterForFormat(std::string_view format) {
  auto& cache = dateFormatterDict();
  if (auto it = cache.find(format); it != cache.end()) return it->second;
  std::string pattern(format);
  auto formatter = format == kJsonDateFormat ? DateFormatter::fixed(pattern)
                                             : DateFormatter::fromTemplate(pattern);
  return cache.emplace(std::move(pattern), std::move(formatter)).first->second;
}

QVKDateUtil::FormatterCache& QVKDateUtil::dateFormatterDict() {
  thread_local FormatterCache cache;
  return cache;
}

}  // namespace velmaro
