#pragma once

#include <string>

namespace quorvel::platform {

// The localized text for an HTTP status code ("not found" for 404), as a
// phone platform's HTTP response type gives it; a generic text by class for
// codes without a phrase of their own.
class HttpStatusText {
 public:
  static std::string localizedString(long statusCode);
};

}  // namespace quorvel::platform
