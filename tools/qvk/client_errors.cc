#include "tools/qvk/client_errors.h"

#include <sstream>

namespace qvk {

using quorvel::platform::Error;

Error ClientErrors::missingUrl() {
  return Error::withDescription(kDomain, kMissingUrl, "No service URL was given");
}

Error ClientErrors::noAnswer(std::chrono::milliseconds waited) {
  std::ostringstream seconds;  // 30, or 0.5 for a fraction given to --timeout
  seconds << static_cast<double>(waited.count()) / 1000;
  return Error::withDescription(kDomain, kNoAnswer,
                                "No answer within " + seconds.str() + " seconds");
}

Error ClientErrors::noSettings() {
  return Error::withDescription(kDomain, kNoSettings,
                                "The service's settings document does not hold these settings");
}

Error ClientErrors::notStored(const std::string& requestId) {
  return Error::withDescription(kDomain, kNotStored,
                                "Request " + requestId +
                                    " is not in this device's request store (list the requests "
                                    "first)");
}

Error ClientErrors::fileTooLarge(const std::string& path, std::uintmax_t size, std::int64_t limit) {
  return Error::withDescription(kDomain, kFileTooLarge,
                                path + " is " + std::to_string(size) +
                                    " bytes; this account accepts attachments of at most " +
                                    std::to_string(limit) + " bytes");
}

Error ClientErrors::noImage() {
  return Error::withDescription(kDomain, kNoImage, "The content is not an image qvk can decode");
}

}  // namespace qvk
