#pragma once

#include <string>

#include "quorvel/platform/error.h"

namespace velmaro {

// Refusals of the dispatch adapter itself, before anything is sent.
enum class DispatcherAdapterError { invalidURL = 0 };

inline constexpr const char* kDispatcherAdapterErrorDomain = "Velmaro.DispatcherAdapterError";

// The platform error a DispatcherAdapterError bridges to, with a description
// that says what failed: the code alone ("error 0") tells a reader nothing.
// `serviceUrl` is the core library's base URL, empty when there is none.
inline quorvel::platform::Error toError(DispatcherAdapterError error,
                                        const std::string& serviceUrl = {}) {
  std::string description = "The request's URL is not a valid URL; nothing was sent";
  if (!serviceUrl.empty()) {
    description = "The URL \"" + serviceUrl +
                  "\" is not a valid service URL (an absolute http or https URL); nothing was "
                  "sent";
  }
  return quorvel::platform::Error::withDescription(kDispatcherAdapterErrorDomain,
                                                   static_cast<long>(error), description);
}

}  // namespace velmaro
