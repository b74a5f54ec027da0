#pragma once

#include <cstdint>

#include "quorvel/platform/error.h"

namespace velmaro {

// What a failed send means to the outbox, and the outcome a caller gets when
// its call was kept instead of sent.
class OutboxErrors {
 public:
  static constexpr const char* kDomain = "Velmaro.RequestOutbox";
  static constexpr long kQueued = 1;
  static constexpr long kCannotKeep = 2;  // the outbox's file cannot be written
  // The user-info key naming the kept call's id.
  static constexpr const char* kEntryIdKey = "outbox_id";

  enum class Failure {
    notReached,      // nothing reached the service: send it later
    mayHaveReached,  // sent, but no answer came: read before sending again
    tryLater,        // the service answered that it cannot take it now
    final,           // the service refused it: it is answered as a failure
  };

  static Failure classify(const quorvel::platform::Error& error);
  // Domain kDomain, code kQueued, the entry id under kEntryIdKey.
  static quorvel::platform::Error queued(std::int64_t entryId);
  static bool isQueued(const quorvel::platform::Error& error) {
    return error.domain == kDomain && error.code == kQueued;
  }
};

}  // namespace velmaro
