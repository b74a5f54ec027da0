#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/account_details.h"
#include "quorvel/cached_http_url_response_delegate.h"
#include "quorvel/client_headers.h"
#include "quorvel/http_method.h"
#include "quorvel/http_url_response.h"
#include "quorvel/platform/error.h"
#include "quorvel/platform/main_queue.h"
#include "quorvel/reporter.h"
#include "quorvel/transport_request.h"

namespace quorvel {

// One HTTP request to the service, with the core's client headers,
// authentication and HTTP cache. perform() never calls back inside itself:
// the callback is posted to `dispatchQueue`, exactly once per perform(),
// also when the core shuts down (then with the cancelled transport error).
class ProviderService {
 public:
  using Callback =
      std::function<void(std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                         std::optional<platform::Error> error)>;

  // `urlComponent` is the full absolute URL. A null `dispatchQueue` means the
  // core's main queue.
  ProviderService(AccountDetails environment, std::string urlComponent, bool requiresAuth,
                  HttpMethod httpMethod, std::shared_ptr<const ClientHeaders> clientHeaders,
                  std::optional<std::string> body,
                  std::shared_ptr<platform::MainQueue> dispatchQueue,
                  Reporter reporter = Reporter::none,
                  std::shared_ptr<CachedHTTPURLResponseDelegate> cachingDelegate = nullptr);

  void perform(Callback callback) const;
  // Removes the HTTP cache's entry for this request (for the current
  // identity), e.g. when its answer turned out to be unreadable. Any thread.
  void removeCachedAnswer() const;

  // Files, limit, progress and cancellation of this request (none by
  // default); its progress is delivered on the dispatch queue.
  void setTransfer(std::shared_ptr<const TransferOptions> transfer) {
    transfer_ = std::move(transfer);
  }

  // The headers this request sends before authentication and validators:
  // the client headers, then the request's own additional ones.
  std::vector<std::pair<std::string, std::string>> headers() const;
  std::vector<std::pair<std::string, std::string>> clientIdentificationHeaders() const;

  const std::string& urlComponent() const { return urlComponent_; }
  bool requiresAuth() const { return requiresAuth_; }
  HttpMethod httpMethod() const { return httpMethod_; }

 private:
  // `headers` followed by the request's own additional ones.
  std::vector<std::pair<std::string, std::string>> withOwnHeaders(
      std::vector<std::pair<std::string, std::string>> headers) const;

  AccountDetails environment_;
  std::string urlComponent_;
  bool requiresAuth_;
  HttpMethod httpMethod_;
  std::shared_ptr<const ClientHeaders> clientHeaders_;
  std::optional<std::string> body_;
  std::shared_ptr<platform::MainQueue> dispatchQueue_;
  Reporter reporter_;
  std::shared_ptr<CachedHTTPURLResponseDelegate> cachingDelegate_;
  std::shared_ptr<const TransferOptions> transfer_;
};

}  // namespace quorvel
