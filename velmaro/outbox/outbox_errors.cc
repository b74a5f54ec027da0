#include "velmaro/outbox/outbox_errors.h"

#include "quorvel/platform/transport_error.h"
#include "velmaro/core/dispatcher_adapter.h"

namespace velmaro {

using quorvel::platform::TransportError;
using quorvel::platform::TransportErrorCode;

// A time-out or a connection lost after sending may come after the service
// stored the call; a refused connection, an unknown host or no network at all
// cannot. A 5xx, a 408, a 429 and a 401 (a token to be fetched again) are
// passing states of the service; any other answer is its verdict on the call.
OutboxErrors::Failure OutboxErrors::classify(const quorvel::platform::Error& error) {
  if (error.domain == TransportError::kDomain) {
    switch (static_cast<TransportErrorCode>(error.code)) {
      case TransportErrorCode::kCannotFindHost:
      case TransportErrorCode::kCannotConnectToHost:
      case TransportErrorCode::kNotConnectedToInternet:
        return Failure::notReached;
      case TransportErrorCode::kTimedOut:
      case TransportErrorCode::kNetworkConnectionLost:
        return Failure::mayHaveReached;
      default:
        return Failure::final;
    }
  }
  if (error.domain == DispatcherAdapter::kHttpErrorDomain) {
    const auto status = error.code;
    if (status >= 500 || status == 401 || status == 408 || status == 429) return Failure::tryLater;
  }
  return Failure::final;
}

quorvel::platform::Error OutboxErrors::queued(std::int64_t entryId) {
  return quorvel::platform::Error(
      kDomain, kQueued,
      {{quorvel::platform::Error::kLocalizedDescriptionKey,
        "The service cannot be reached; the call is kept in the outbox and will be sent when it "
        "can."},
       {kEntryIdKey, entryId}});
}

}  // namespace velmaro
