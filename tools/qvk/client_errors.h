#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "quorvel/platform/error.h"

namespace qvk {

// Errors that qvk itself reports, in its own domain, next to those of the
// service and the library.
class ClientErrors {
 public:
  static constexpr const char* kDomain = "qvk";
  static constexpr long kMissingUrl = 1;
  static constexpr long kNoAnswer = 2;
  static constexpr long kNoSettings = 3;
  static constexpr long kNotStored = 4;
  static constexpr long kFileTooLarge = 5;
  static constexpr long kNoImage = 6;

  static quorvel::platform::Error missingUrl();
  static quorvel::platform::Error noAnswer(std::chrono::milliseconds waited);
  // The settings arrived but did not decode as the record asked for. When
  // they did not arrive, the download's own error is reported instead.
  static quorvel::platform::Error noSettings();
  // The device's request store has no record of the request: marking it
  // read or unread would change nothing.
  static quorvel::platform::Error notStored(const std::string& requestId);
  // The file is larger than the account's attachment limit.
  static quorvel::platform::Error fileTooLarge(const std::string& path, std::uintmax_t size,
                                               std::int64_t limit);
  static quorvel::platform::Error noImage();
};

}  // namespace qvk
