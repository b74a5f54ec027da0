#pragma once

#include "quorvel/platform/error.h"

namespace velmaro {

// Refusals of the dispatch adapter itself, before anything is sent.
enum class DispatcherAdapterError { invalidURL = 0 };

inline constexpr const char* kDispatcherAdapterErrorDomain = "Velmaro.DispatcherAdapterError";

// The platform error a DispatcherAdapterError bridges to.
inline quorvel::platform::Error toError(DispatcherAdapterError error) {
  return quorvel::platform::Error(kDispatcherAdapterErrorDomain, static_cast<long>(error));
}

}  // namespace velmaro
