#include "tools/qvk/error_hints.h"

#include "quorvel/platform/transport_error.h"
#include "tools/qvk/client_errors.h"

namespace qvk {

namespace {

using quorvel::platform::TransportError;
using quorvel::platform::TransportErrorCode;

std::string transportHint(long code, const std::string& url) {
  switch (static_cast<TransportErrorCode>(code)) {
    case TransportErrorCode::kCannotConnectToHost:
    case TransportErrorCode::kNetworkConnectionLost:
      return "is qvk-emulator running at " + url + "?";
    case TransportErrorCode::kCannotFindHost:
      return "check the host name in --url (" + url + ")";
    case TransportErrorCode::kTimedOut:
      return "the service at " + url + " did not answer in time; try again";
    case TransportErrorCode::kBadURL:
      return "check --url: it must be an absolute http or https URL";
    case TransportErrorCode::kSecureConnectionFailed:
      return "the TLS connection to " + url + " failed; check the URL and certificates";
    default:
      return {};
  }
}

std::string httpHint(long status) {
  switch (status) {
    case 401:
    case 403:
      return "the service refused the identity; pass --jwt TOKEN for a signed-in user";
    case 404:
      return "check the id (and the locale: --locale TAG); `qvk hc categories` lists what exists";
    default:
      return status >= 500 ? "the service failed; try again later" : std::string();
  }
}

}  // namespace

std::string ErrorHints::hintFor(const quorvel::platform::Error& error, const std::string& url) {
  if (error.domain == TransportError::kDomain) return transportHint(error.code, url);
  if (error.domain == "com.quorvel.sdk") return httpHint(error.code);
  if (error.domain == "com.quorvel.support" && error.code == 2001) {
    return "article voting is off in the Help Center settings (see `qvk settings help-center`)";
  }
  if (error.domain == ClientErrors::kDomain) {
    switch (error.code) {
      case ClientErrors::kMissingUrl:
        return "pass --url or set QVK_URL";
      case ClientErrors::kNoAnswer:
        return "is the service at " + url + " answering?";
      case ClientErrors::kNoSettings:
        return "is qvk-emulator running at " + url + "? (-v shows the library's log)";
      default:
        return {};
    }
  }
  return {};
}

}  // namespace qvk
