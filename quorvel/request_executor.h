#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/cached_http_url_response_delegate.h"
#include "quorvel/http_cache_entry.h"
#include "quorvel/http_method.h"
#include "quorvel/http_url_response.h"
#include "quorvel/platform/error.h"
#include "quorvel/platform/result.h"
#include "quorvel/transport_request.h"

namespace quorvel {

class CoreServices;

// Runs one request of a ProviderService through the HTTP cache, the token
// exchange and the transport, and completes it exactly once, on whichever
// thread the outcome is known (the caller's for a cache hit, else the
// transport's). The ProviderService posts the completion on to its queue.
class RequestExecutor {
 public:
  using Headers = std::vector<std::pair<std::string, std::string>>;
  using Completion =
      std::function<void(std::optional<std::string> body, std::optional<HTTPURLResponse> response,
                         std::optional<platform::Error> error)>;

  struct Job {
    std::string url;
    HttpMethod method = HttpMethod::get;
    bool requiresAuth = false;
    // Client headers followed by the request's own, as they go out.
    Headers headers;
    // The client headers alone, for the token exchange.
    Headers clientHeaders;
    std::optional<std::string> body;
    std::shared_ptr<CachedHTTPURLResponseDelegate> cachingDelegate;
    // Files, limit, progress and cancellation; such a request bypasses the
    // HTTP cache (a file's bytes are not kept, a cached answer has no
    // progress).
    std::shared_ptr<const TransferOptions> transfer;
  };

  // Posted on the main queue, before the answer's callback, when a stored
  // GET answer stands in for a service that could not be reached. User info:
  // the URL (std::string) and when the copy was stored (double, seconds
  // since 1970).
  static constexpr const char* kStaleAnswerNotification = "QuorvelStaleAnswerNotification";
  static constexpr const char* kStaleAnswerURLKey = "url";
  static constexpr const char* kStaleAnswerStoredAtKey = "storedAt";

  explicit RequestExecutor(CoreServices& services) : services_(services) {}

  void execute(Job job, Completion completion);

  // The cache key of a GET: its URL and, for an authenticated request, the
  // scope of the identity it is made for, so that one user's answers are
  // never served to another.
  static std::string cacheKey(const std::string& url, const std::string& scope);
  // Drops what the HTTP cache holds for a GET of `url` made now, for an
  // answer its caller could not read: kept, it would be served again for its
  // whole lifetime.
  void removeCached(const std::string& url, bool requiresAuth);

 private:
  struct Call;

  // False for a URL off the service's origin, which is sent without the token.
  bool sendsToken(const std::string& url, bool requiresAuth) const;
  // The key of a GET of `url` for the current identity.
  std::string keyFor(const std::string& url, bool requiresAuth) const;

  void send(std::shared_ptr<Call> call, std::optional<std::string> token);
  void handle(const std::shared_ptr<Call>& call, platform::Result<TransportResponse> result);
  void answerFromCache(const Call& call, const HttpCacheEntry& entry);
  // Answers `call` with its stale stored copy when `error` says the service
  // was not reached and the copy may stand in; false when it may not.
  bool answerStaleInstead(const Call& call, const platform::Error& error);
  void announceStaleAnswer(const std::string& url, double storedAt);
  void storeAnswer(const Call& call, const HTTPURLResponse& response, const std::string& body);
  void refreshAfterNotModified(const Call& call, const TransportResponse& notModified);

  CoreServices& services_;
};

}  // namespace quorvel
