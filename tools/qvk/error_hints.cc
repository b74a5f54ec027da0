#include "tools/qvk/error_hints.h"

#include "quorvel/platform/transport_error.h"
#include "tools/qvk/client_errors.h"
#include "velmaro/core/dispatcher_adapter_error.h"

namespace qvk {

namespace {

using quorvel::platform::TransportError;
using quorvel::platform::TransportErrorCode;

constexpr const char* kCheckUrl = "check --url: it must be an absolute http or https URL";

std::string transportHint(long code, const std::string& url) {
  switch (static_cast<TransportErrorCode>(code)) {
    case TransportErrorCode::kCannotConnectToHost:
      return "is qvk-emulator running at " + url + "?";
    case TransportErrorCode::kNetworkConnectionLost:
      return "the connection to " + url + " ended before the answer was complete; try again";
    case TransportErrorCode::kCannotFindHost:
      return "check the host name in --url (" + url + ")";
    case TransportErrorCode::kTimedOut:
      return "the service at " + url + " did not answer in time; try again, or wait longer " +
             "with --timeout SECONDS";
    case TransportErrorCode::kBadURL:
      return kCheckUrl;
    case TransportErrorCode::kBadServerResponse:
      return "the server at " + url + " does not answer as the service does; check --url";
    case TransportErrorCode::kSecureConnectionFailed:
      return "the TLS connection to " + url +
             " failed: check that the server speaks https (qvk-emulator speaks http) and that "
             "its certificate is valid and trusted";
    default:
      return {};
  }
}

std::string httpHint(long status, bool jwtGiven) {
  switch (status) {
    case 401:
    case 403:
      return jwtGiven ? "the token was refused: check it is signed for this app and not expired"
                      : "the service refused the identity; pass --jwt TOKEN for a signed-in user";
    case 404:
      return "check the id (and the locale: --locale TAG); `qvk hc categories` lists what exists";
    default:
      return status >= 500 ? "the service failed; try again later" : std::string();
  }
}

std::string clientHint(long code, const std::string& url) {
  switch (code) {
    case ClientErrors::kMissingUrl:
      return "pass --url or set QVK_URL";
    case ClientErrors::kNoAnswer:
      return "is the service at " + url + " answering? --timeout SECONDS waits longer";
    case ClientErrors::kNoSettings:
      return "the service's settings document lacks what qvk reads (-v shows the library's log)";
    default:
      return {};
  }
}

}  // namespace

std::string ErrorHints::hintFor(const quorvel::platform::Error& error, const Context& context) {
  if (error.domain == TransportError::kDomain) return transportHint(error.code, context.url);
  if (error.domain == "com.quorvel.sdk") return httpHint(error.code, context.jwtGiven);
  if (error.domain == "com.quorvel.support" && error.code == 2001) {
    return "article voting is off in the Help Center settings (see `qvk settings help-center`)";
  }
  if (error.domain == velmaro::kDispatcherAdapterErrorDomain) return kCheckUrl;
  if (error.domain == ClientErrors::kDomain) return clientHint(error.code, context.url);
  return {};
}

}  // namespace qvk
