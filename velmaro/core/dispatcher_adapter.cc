#include "velmaro/core/dispatcher_adapter.h"

#include <fmt/format.h>
#include <strings.h>

#include "quorvel/core_logger.h"
#include "quorvel/platform/http_status_text.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/provider_service.h"
#include "velmaro/core/dispatcher_adapter_error.h"
#include "velmaro/core/dispatcher_notifications.h"
#include "velmaro/core/dravik_caching_delegate.h"
#include "velmaro/core/endpoint_kind.h"
#include "velmaro/core/support_headers.h"

namespace velmaro {

using quorvel::platform::Error;

namespace {

// Stateless, so one delegate serves every request.
const std::shared_ptr<DravikCachingDelegate>& cachingDelegate() {
  static const auto delegate = std::make_shared<DravikCachingDelegate>();
  return delegate;
}

Error notInitializedError() {
  return Error::withDescription(kDispatcherAdapterErrorDomain, 1,
                                "The core library is not initialized: call "
                                "quorvel::Quorvel::initialize and Support::initialize first.");
}

// The core's base URL when it is itself no valid URL (every request made
// from it is then refused, so the message names it), else "".
std::string invalidServiceUrl(const std::shared_ptr<quorvel::Quorvel>& quorvel) {
  if (!quorvel) return {};
  const std::string base = quorvel->accountDetails().quorvelUrl();
  const auto url = quorvel::platform::Url::make(base);
  const bool valid =
      url && (url->scheme() == "http" || url->scheme() == "https") && !url->host().empty();
  return valid ? std::string() : base;
}

}  // namespace

quorvel::HttpMethod DispatcherAdapter::httpMethod(const std::optional<std::string>& method) {
  if (!method) return quorvel::HttpMethod::get;
  const char* text = method->c_str();
  if (strcasecmp(text, "post") == 0) return quorvel::HttpMethod::post;
  if (strcasecmp(text, "delete") == 0) return quorvel::HttpMethod::delete_;
  if (strcasecmp(text, "put") == 0) return quorvel::HttpMethod::put;
  return quorvel::HttpMethod::get;
}

void DispatcherAdapter::performRequest(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                                       const quorvel::platform::URLRequest& urlRequest,
                                       CompletionHandler completionHandler,
                                       std::shared_ptr<const quorvel::TransferOptions> transfer) {
  if (!urlRequest.url) {
    if (completionHandler) {
      completionHandler(std::nullopt, std::nullopt,
                        toError(DispatcherAdapterError::invalidURL, invalidServiceUrl(quorvel)));
    }
    return;
  }
  if (!quorvel) {
    // A provider made before the core library was initialized: there is no
    // transport and no main queue, so the refusal comes at once, like a
    // request without URL.
    if (completionHandler) completionHandler(std::nullopt, std::nullopt, notInitializedError());
    return;
  }
  auto service = serviceFor(quorvel, urlRequest);
  service.setTransfer(std::move(transfer));
  service.perform(
      [completion = std::move(completionHandler)](std::optional<std::string> data,
                                                  std::optional<quorvel::HTTPURLResponse> response,
                                                  std::optional<Error> error) mutable {
        if (completion) completion(std::move(response), std::move(data), std::move(error));
      });
}

quorvel::ProviderService DispatcherAdapter::serviceFor(
    const std::shared_ptr<quorvel::Quorvel>& quorvel,
    const quorvel::platform::URLRequest& urlRequest) {
  auto identity = quorvel->identity();
  const bool requiresAuth =
      EndpointKinds::requiresAuth(EndpointKinds::kindOf(*urlRequest.url), identity.get());
  auto headers = std::make_shared<const SupportHeaders>(urlRequest.allHTTPHeaderFields());
  return quorvel::ProviderService(quorvel->accountDetails(), urlRequest.url->absoluteString(),
                                  requiresAuth, httpMethod(urlRequest.httpMethod),
                                  std::move(headers), urlRequest.httpBody, quorvel->mainQueue(),
                                  quorvel::Reporter::none, cachingDelegate());
}

void DispatcherAdapter::discardUnreadableAnswer(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                                                const quorvel::platform::URLRequest& urlRequest,
                                                std::string_view reason) {
  if (!urlRequest.url) return;
  quorvel::CoreLogger::warn(fmt::format("Could not read the answer to {} ({}); not keeping it",
                                        urlRequest.url->absoluteString(), reason));
  if (quorvel) serviceFor(quorvel, urlRequest).removeCachedAnswer();
}

std::optional<Error> DispatcherAdapter::convertError(
    const std::optional<quorvel::HTTPURLResponse>& response,
    const std::optional<Error>& originalError) {
  if (originalError) return originalError;
  if (!response) return std::nullopt;
  const long status = response->statusCode();
  if (status >= 200 && status <= 299) return std::nullopt;
  if (status == 401) {
    quorvel::platform::NotificationCenter::defaultCenter().post(
        DispatcherNotifications::UnauthorizedNotificationName);
  }
  boost::json::object userInfo;
  userInfo[Error::kLocalizedDescriptionKey] =
      quorvel::platform::HttpStatusText::localizedString(status);
  userInfo[kStatusCodeKey] = "HTTP Error: " + std::to_string(status);
  return Error(kHttpErrorDomain, status, std::move(userInfo));
}

void DispatcherAdapter::logError(const std::optional<quorvel::platform::Url>& url,
                                 const std::optional<quorvel::HTTPURLResponse>& response,
                                 const std::optional<Error>& error) {
  auto core = quorvel::Quorvel::instance();
  if (!core) return;
  auto identity = core->identity();
  if (!identity) return;
  // Converting again posts "QVKUnauthorized" a second time for a 401: the
  // established behaviour, which observers tolerate.
  auto converted = convertError(response, error);
  if (converted && converted->code == 401 && identity->type() == quorvel::IdentityType::anonymous &&
      url && EndpointKinds::kindOf(*url) == EndpointKind::helpCenter) {
    quorvel::CoreLogger::warn("Kestrune is restricted for anonymous users.");
  }
}

void DispatcherAdapter::clearSettingsAndSession() {
  if (auto core = quorvel::Quorvel::instance()) core->storeModule().clearSettingsAndSession();
}

}  // namespace velmaro
