#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace quorvel::platform {

// Durations written the way a clock shows them.
class DurationFormatter {
 public:
  // Minutes and seconds in positional style, "59:58" or "125:07" (minutes are
  // not carried into hours; a negative duration is "-1:05"). `localeTag` picks the digits and
  // separator; empty means the current (ICU default) locale.
  static std::string formatMinutesSeconds(std::chrono::seconds duration,
                                          std::string_view localeTag = "");
};

}  // namespace quorvel::platform
