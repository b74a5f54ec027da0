#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/http_method.h"
#include "quorvel/http_url_response.h"
#include "quorvel/platform/error.h"
#include "quorvel/platform/url_request.h"
#include "quorvel/provider_service.h"
#include "quorvel/quorvel.h"
#include "quorvel/transport_request.h"

namespace velmaro {

// Turns one URL request into one core ProviderService call, and an HTTP
// outcome into success or a uniform error.
class DispatcherAdapter {
 public:
  using CompletionHandler =
      std::function<void(std::optional<quorvel::HTTPURLResponse> response,
                         std::optional<std::string> data, std::optional<quorvel::platform::Error>)>;

  static constexpr const char* kHttpErrorDomain = "com.quorvel.sdk";
  static constexpr const char* kStatusCodeKey = "status_code";

  // A request without URL is answered at once, on the caller's thread, with
  // DispatcherAdapterError::invalidURL; everything else on the main queue.
  static void performRequest(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                             const quorvel::platform::URLRequest& urlRequest,
                             CompletionHandler completionHandler,
                             std::shared_ptr<const quorvel::TransferOptions> transfer = nullptr);
  static void performRequestWithQuorvel(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                                        const quorvel::platform::URLRequest& urlRequest,
                                        CompletionHandler completionHandler) {
    performRequest(quorvel, urlRequest, std::move(completionHandler));
  }

  // Nothing means success. A transport error wins over any response; a
  // status outside 200-299 becomes an error in kHttpErrorDomain with the
  // status as code; a 401 also posts "QVKUnauthorized".
  static std::optional<quorvel::platform::Error> convertError(
      const std::optional<quorvel::HTTPURLResponse>& response,
      const std::optional<quorvel::platform::Error>& originalError);
  static std::optional<quorvel::platform::Error> convertErrorWithResponse(
      const std::optional<quorvel::HTTPURLResponse>& response,
      const std::optional<quorvel::platform::Error>& originalError) {
    return convertError(response, originalError);
  }

  // Warns about one configuration mistake: a Help Center read refused with
  // 401 for an anonymous user.
  static void logError(const std::optional<quorvel::platform::Url>& url,
                       const std::optional<quorvel::HTTPURLResponse>& response,
                       const std::optional<quorvel::platform::Error>& error);
  static void logErrorWithUrl(const std::optional<quorvel::platform::Url>& url,
                              const std::optional<quorvel::HTTPURLResponse>& response,
                              const std::optional<quorvel::platform::Error>& error) {
    logError(url, response, error);
  }

  static void clearSettingsAndSession();

  // A 2xx answer to `urlRequest` whose body could not be read: logged as a
  // warning, and its HTTP cache entry removed through the core.
  static void discardUnreadableAnswer(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                                      const quorvel::platform::URLRequest& urlRequest,
                                      std::string_view reason);

  // "get", "post", "delete", "put" in any case; anything else, or none, is GET.
  static quorvel::HttpMethod httpMethod(const std::optional<std::string>& method);

 private:
  // The core call for `urlRequest`, which must have a URL.
  static quorvel::ProviderService serviceFor(const std::shared_ptr<quorvel::Quorvel>& quorvel,
                                             const quorvel::platform::URLRequest& urlRequest);
};

}  // namespace velmaro
