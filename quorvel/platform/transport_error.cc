#include "quorvel/platform/transport_error.h"

namespace quorvel::platform {

std::string TransportError::describe(TransportErrorCode code) {
  switch (code) {
    case TransportErrorCode::kCancelled:
      return "cancelled";
    case TransportErrorCode::kTimedOut:
      return "The request timed out.";
    case TransportErrorCode::kCannotFindHost:
      return "A server with the specified hostname could not be found.";
    case TransportErrorCode::kCannotConnectToHost:
      return "Could not connect to the server.";
    case TransportErrorCode::kNetworkConnectionLost:
      return "The network connection was lost.";
    case TransportErrorCode::kNotConnectedToInternet:
      return "The Internet connection appears to be offline.";
    case TransportErrorCode::kDataLengthExceedsMaximum:
      return "The resource exceeds the maximum size.";
    case TransportErrorCode::kSecureConnectionFailed:
      return "An SSL error has occurred and a secure connection to the server cannot be made.";
    case TransportErrorCode::kBadURL:
      return "The URL is not a valid http or https URL.";
    case TransportErrorCode::kBadServerResponse:
      return "The server response was not understood.";
    case TransportErrorCode::kCannotOpenFile:
      return "The file could not be opened.";
    case TransportErrorCode::kCannotWriteToFile:
      return "The file could not be written.";
    case TransportErrorCode::kUnknown:
      break;
  }
  return "An unknown network error occurred.";
}

Error TransportError::make(TransportErrorCode code, const std::string& detail) {
  Error error = Error::withDescription(kDomain, static_cast<long>(code), describe(code));
  if (!detail.empty()) error.userInfo[kDetailKey] = detail;
  return error;
}

Error TransportError::notHttp(const std::string& detail) {
  Error error = make(TransportErrorCode::kBadServerResponse, detail);
  error.userInfo[Error::kLocalizedDescriptionKey] = "The server's answer is not HTTP.";
  return error;
}

}  // namespace quorvel::platform
