#include "quorvel/access_token_manager.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include "quorvel/core_logger.h"
#include "quorvel/http_transport.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/session_store.h"

namespace quorvel {
namespace {

std::optional<std::string> tokenFromBody(const std::string& body) {
  boost::system::error_code ec;
  const auto parsed = boost::json::parse(body, ec);
  if (ec || !parsed.is_object()) return std::nullopt;
  const auto* token = parsed.get_object().if_contains("access_token");
  if (token == nullptr || !token->is_string() || token->get_string().empty()) return std::nullopt;
  return std::string(token->get_string());
}

}  // namespace

AccessTokenManager::AccessTokenManager(SessionStore& store, HttpTransport& transport,
                                       std::string baseUrl)
    : store_(store), transport_(transport), baseUrl_(std::move(baseUrl)) {}

std::optional<std::string> AccessTokenManager::keptToken(const std::string& scope) const {
  const auto kept = store_.value(kStoreKey);
  if (!kept || !kept->is_object()) return std::nullopt;
  const auto& object = kept->get_object();
  const auto* keptScope = object.if_contains("scope");
  const auto* token = object.if_contains("token");
  if (keptScope == nullptr || token == nullptr || !keptScope->is_string() || !token->is_string() ||
      keptScope->get_string() != scope) {
    return std::nullopt;
  }
  return std::string(token->get_string());
}

void AccessTokenManager::withToken(const std::shared_ptr<const Identity>& identity, Headers headers,
                                   Callback callback) {
  const std::string scope = identity->scope();
  std::unique_lock lock(mutex_);
  if (auto token = keptToken(scope)) {
    lock.unlock();
    Outcome outcome;
    outcome.token = std::move(token);
    callback(std::move(outcome));
    return;
  }
  auto& waiters = waiting_[scope];
  const bool startExchange = waiters.empty();
  waiters.push_back(std::move(callback));
  lock.unlock();
  if (startExchange) exchange(identity, std::move(headers));
}

void AccessTokenManager::exchange(const std::shared_ptr<const Identity>& identity,
                                  Headers headers) {
  TransportRequest request;
  request.url = baseUrl_ + identity->exchangePath();
  request.method = HttpMethod::post;
  request.headers = std::move(headers);
  request.headers.emplace_back("Content-Type", "application/json");
  request.body = boost::json::serialize(identity->exchangeBody());
  CoreLogger::debug(fmt::format("Exchanging the identity for an access token at {}", request.url));
  transport_.submit(std::move(request),
                    [this, scope = identity->scope()](platform::Result<TransportResponse> result) {
                      finish(scope, std::move(result));
                    });
}

void AccessTokenManager::finish(const std::string& scope,
                                platform::Result<TransportResponse> result) {
  Outcome outcome;
  if (!result.ok()) {
    CoreLogger::warn(
        fmt::format("Access token exchange failed: {}", result.error().debugDescription()));
    outcome.error = result.error();
  } else if (result->statusCode < 200 || result->statusCode > 299) {
    CoreLogger::warn(fmt::format("Access token exchange answered {}", result->statusCode));
    outcome.rejection = std::move(result.value());
  } else if (auto token = tokenFromBody(result->body)) {
    boost::json::object kept;
    kept["scope"] = scope;
    kept["token"] = *token;
    store_.store(kept, kStoreKey);
    outcome.token = std::move(token);
  } else {
    outcome.error = platform::TransportError::make(platform::TransportErrorCode::kBadServerResponse,
                                                   "the access token answer has no access_token");
  }

  std::vector<Callback> waiters;
  {
    std::lock_guard lock(mutex_);
    if (const auto it = waiting_.find(scope); it != waiting_.end()) {
      waiters = std::move(it->second);
      waiting_.erase(it);
    }
  }
  for (auto& waiter : waiters) waiter(outcome);
}

void AccessTokenManager::invalidate(const std::string& token) {
  std::lock_guard lock(mutex_);
  const auto kept = store_.value(kStoreKey);
  if (!kept || !kept->is_object()) return;
  const auto* keptToken = kept->get_object().if_contains("token");
  if (keptToken != nullptr && keptToken->is_string() && keptToken->get_string() == token) {
    store_.remove(kStoreKey);
  }
}

void AccessTokenManager::clear() {
  std::lock_guard lock(mutex_);
  store_.remove(kStoreKey);
}

}  // namespace quorvel
