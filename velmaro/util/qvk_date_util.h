#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/value.hpp>
#include <boost/json/value_from.hpp>

#include "quorvel/platform/date_formatter.h"

namespace velmaro {

// Conversions between dates, numbers and the service's timestamp text.
// Formatters are cached per thread: a platform DateFormatter carries parse
// state and must not be used from two threads at once.
class QVKDateUtil {
 public:
  using TimePoint = std::chrono::system_clock::time_point;
  using FormatterCache = std::map<std::string, quorvel::platform::DateFormatter, std::less<>>;

  // The wire timestamp, always UTC with the "en_US_POSIX" locale.
  static constexpr std::string_view kJsonDateFormat = "yyyy-MM-dd'T'HH:mm:ss'Z'";

  // Seconds since 1970-01-01T00:00:00Z.
  static double dateAsNumber(TimePoint date);
  static TimePoint dateFromNumber(double seconds);

  // Nothing for an absent value, JSON null, a non-string or text that does
  // not match the wire format.
  static std::optional<TimePoint> dateForJsonString(const boost::json::value* value);
  static std::optional<TimePoint> dateForJsonString(std::string_view text);
  static std::optional<TimePoint> dateFromString(std::string_view text, std::string_view format);

  static std::string stringFromDate(TimePoint date);
  static std::string stringFromDate(TimePoint date, std::string_view format);

  // This thread's formatter for `format`, made on first use: the wire format
  // is machine-independent; any other text is a template of date components
  // turned into the current locale's pattern in the system time zone.
  static quorvel::platform::DateFormatter& formatterForFormat(std::string_view format);
  // This thread's formatter cache (never evicted).
  static FormatterCache& dateFormatterDict();
};

}  // namespace velmaro

// Dates in records become the wire timestamp text when a record is turned
// into JSON (QVKJsonUtil::convertObjectToDictionary, boost::json::value_from).
// Declared here, once for the whole library, so that every record with a date
// shares one conversion.
namespace boost::json {
inline void tag_invoke(value_from_tag, value& json, std::chrono::system_clock::time_point date) {
  json = velmaro::QVKDateUtil::stringFromDate(date);
}
}  // namespace boost::json
