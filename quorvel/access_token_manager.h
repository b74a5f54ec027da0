#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/identity.h"
#include "quorvel/platform/error.h"
#include "quorvel/platform/result.h"
#include "quorvel/transport_request.h"

namespace quorvel {

class HttpTransport;
class SessionStore;

// Exchanges the identity for an access token once and keeps the token in the
// session store. Callers that need a token while an exchange is in flight
// wait for that one exchange. Safe from any thread.
class AccessTokenManager {
 public:
  // Exactly one of: a token; the exchange's own non-2xx answer; an error.
  struct Outcome {
    std::optional<std::string> token;
    std::optional<TransportResponse> rejection;
    std::optional<platform::Error> error;
  };
  using Callback = std::function<void(Outcome)>;
  using Headers = std::vector<std::pair<std::string, std::string>>;

  static constexpr const char* kStoreKey = "quorvel.core.access_token";

  AccessTokenManager(SessionStore& store, HttpTransport& transport, std::string baseUrl);

  // Calls back at once (on this thread) with a kept token for `identity`,
  // else after the exchange, on the transport's thread. `headers` are the
  // client headers the exchange request carries.
  void withToken(const std::shared_ptr<const Identity>& identity, Headers headers,
                 Callback callback);
  // Drops the kept token if it is `token` (a 401 answered a request that
  // carried it), so that the next call exchanges again.
  void invalidate(const std::string& token);
  void clear();

 private:
  std::optional<std::string> keptToken(const std::string& scope) const;
  void exchange(const std::shared_ptr<const Identity>& identity, Headers headers);
  void finish(const std::string& scope, platform::Result<TransportResponse> result);

  SessionStore& store_;
  HttpTransport& transport_;
  std::string baseUrl_;
  std::mutex mutex_;
  // Callers waiting for the exchange in flight, by identity scope.
  std::map<std::string, std::vector<Callback>> waiting_;
};

}  // namespace quorvel
