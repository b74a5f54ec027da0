#pragma once

#include <string>

#include "quorvel/platform/error.h"

namespace quorvel::platform {

// Transport failures use the codes of the well-known URL-loading errors, so
// that callers can tell a time-out from an unreachable host whatever the
// transport underneath.
enum class TransportErrorCode : long {
  kCancelled = -999,
  kTimedOut = -1001,
  kCannotFindHost = -1003,
  kCannotConnectToHost = -1004,
  kNetworkConnectionLost = -1005,
  kNotConnectedToInternet = -1009,
  kDataLengthExceedsMaximum = -1103,
  kSecureConnectionFailed = -1200,
  kBadURL = -1000,
  kBadServerResponse = -1011,
  kCannotOpenFile = -3001,
  kCannotWriteToFile = -3003,
  kUnknown = -1,
};

struct TransportError {
  static constexpr const char* kDomain = "quorvel.transport";
  // The user-info key holding the underlying library's own message.
  static constexpr const char* kDetailKey = "detail";

  // An error in the transport domain with a fixed description for `code` and
  // `detail` (for example libcurl's message) in user info.
  static Error make(TransportErrorCode code, const std::string& detail = {});
  // kBadServerResponse for a server that answered bytes that are not HTTP
  // at all (another protocol's greeting, an HTTP/0.9 reply): the URL is
  // fine, the server at it is not the service.
  static Error notHttp(const std::string& detail = {});
  static std::string describe(TransportErrorCode code);
};

}  // namespace quorvel::platform
