#include "quorvel/request_executor.h"

#include <chrono>

#include <fmt/format.h>

#include "quorvel/connection_ledger.h"
#include "quorvel/core_logger.h"
#include "quorvel/core_services.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/transport_error.h"

namespace quorvel {
namespace {

double nowSeconds() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

bool hasHeader(const RequestExecutor::Headers& headers, std::string_view name) {
  for (const auto& header : headers) {
    if (equalsIgnoringCase(header.first, name)) return true;
  }
  return false;
}

platform::Error badResponse(const std::string& url) {
  return platform::TransportError::make(platform::TransportErrorCode::kBadServerResponse,
                                        "cannot make a response for " + url);
}

// The cached answer a transformer (if any) turns `cached` into.
CachedURLResponse transformed(const std::shared_ptr<CachedHTTPURLResponseDelegate>& delegate,
                              CachedURLResponse cached) {
  if (!delegate) return cached;
  const auto transformer = delegate->transformer(cached.response());
  if (!transformer) return cached;
  return transformer->transform(cached);
}

// Failures in which the request never reached the service. An answer the
// service did give (a 404, a 500) is never covered up by a stored one.
bool serviceUnreachable(const platform::Error& error) {
  using Code = platform::TransportErrorCode;
  if (error.domain != platform::TransportError::kDomain) return false;
  switch (static_cast<Code>(error.code)) {
    case Code::kTimedOut:
    case Code::kCannotFindHost:
    case Code::kCannotConnectToHost:
    case Code::kNotConnectedToInternet:
      return true;
    default:
      return false;
  }
}

}  // namespace

struct RequestExecutor::Call {
  Job job;
  Completion completion;
  std::string cacheKey;                         // empty: the cache is not used
  std::shared_ptr<const HttpCacheEntry> stale;  // past its freshness
  std::shared_ptr<const HttpCacheEntry> revalidating;
  std::optional<std::string> token;
};

std::string RequestExecutor::cacheKey(const std::string& url, const std::string& scope) {
  return scope.empty() ? url : url + "\n" + scope;
}

bool RequestExecutor::sendsToken(const std::string& url, bool requiresAuth) const {
  return requiresAuth &&
         ConnectionLedger::originOf(url) == ConnectionLedger::originOf(services_.quorvelUrl());
}

std::string RequestExecutor::keyFor(const std::string& url, bool requiresAuth) const {
  if (!requiresAuth) return cacheKey(url, std::string());
  const auto identity = services_.identity();
  return cacheKey(url, identity ? identity->scope() : std::string("none"));
}

void RequestExecutor::removeCached(const std::string& url, bool requiresAuth) {
  services_.httpCache().remove(keyFor(url, sendsToken(url, requiresAuth)));
}

void RequestExecutor::execute(Job job, Completion completion) {
  auto call = std::make_shared<Call>();
  call->job = std::move(job);
  call->completion = std::move(completion);
  const auto identity = services_.identity();
  if (call->job.requiresAuth && !sendsToken(call->job.url, true)) {
    // The access token is the service's: a URL elsewhere (an attachment on
    // another host, say) is asked for without it.
    CoreLogger::debug(fmt::format("{} is not on the service's host; sending it without the token",
                                  call->job.url));
    call->job.requiresAuth = false;
  }

  // A request that carries its own validator wants the server's answer
  // (a 304 included), not ours; so does one that says how to cache (a read
  // that must see what the service holds now, never a stored copy).
  if (call->job.method == HttpMethod::get && !call->job.transfer &&
      !hasHeader(call->job.headers, "If-None-Match") &&
      !hasHeader(call->job.headers, "Cache-Control")) {
    call->cacheKey = keyFor(call->job.url, call->job.requiresAuth);
    if (auto entry = services_.httpCache().lookup(call->cacheKey)) {
      if (entry->isFresh(nowSeconds())) {
        answerFromCache(*call, *entry);
        return;
      }
      if (entry->etag()) call->revalidating = entry;
      call->stale = std::move(entry);
    }
  }

  if (!call->job.requiresAuth) {
    send(std::move(call), std::nullopt);
    return;
  }
  if (!identity) {
    CoreLogger::warn(fmt::format(
        "{} needs authentication but no identity is set; sending it without", call->job.url));
    send(std::move(call), std::nullopt);
    return;
  }
  auto headers = std::move(call->job.clientHeaders);
  services_.tokens().withToken(
      identity, std::move(headers), [this, call](AccessTokenManager::Outcome outcome) mutable {
        if (outcome.token) {
          send(std::move(call), std::move(outcome.token));
        } else if (outcome.rejection) {
          handle(call, std::move(*outcome.rejection));
        } else if (!answerStaleInstead(*call, *outcome.error)) {
          call->completion(std::nullopt, std::nullopt, std::move(outcome.error));
        }
      });
}

void RequestExecutor::send(std::shared_ptr<Call> call, std::optional<std::string> token) {
  TransportRequest request;
  request.url = call->job.url;
  request.method = call->job.method;
  // Sent once: the job needs its headers no more.
  request.headers = std::move(call->job.headers);
  request.body = std::move(call->job.body);
  request.transfer = call->job.transfer;
  if (token) request.headers.emplace_back("Authorization", "Bearer " + *token);
  if (call->revalidating) {
    request.headers.emplace_back("If-None-Match", *call->revalidating->etag());
  }
  call->token = std::move(token);
  services_.transport().submit(std::move(request),
                               [this, call](platform::Result<TransportResponse> result) {
                                 handle(call, std::move(result));
                               });
}

void RequestExecutor::handle(const std::shared_ptr<Call>& call,
                             platform::Result<TransportResponse> result) {
  if (!result.ok()) {
    if (!answerStaleInstead(*call, result.error())) {
      call->completion(std::nullopt, std::nullopt, result.error());
    }
    return;
  }
  TransportResponse& answer = result.value();
  if (answer.statusCode == 401 && call->token) {
    // The token is no longer accepted: the next call exchanges again.
    services_.tokens().invalidate(*call->token);
  }
  if (answer.statusCode == 304 && call->revalidating) {
    refreshAfterNotModified(*call, answer);
    return;
  }
  std::string url = answer.url.empty() ? call->job.url : std::move(answer.url);
  auto response = HTTPURLResponse::make(url, answer.statusCode, std::move(answer.httpVersion),
                                        std::move(answer.headers));
  if (!response) {
    call->completion(std::nullopt, std::nullopt, badResponse(url));
    return;
  }
  if (!call->cacheKey.empty()) storeAnswer(*call, *response, answer.body);
  std::optional<std::string> body;
  if (!answer.body.empty()) body = std::move(answer.body);
  call->completion(std::move(body), std::move(response), std::nullopt);
}

void RequestExecutor::answerFromCache(const Call& call, const HttpCacheEntry& entry) {
  auto response = HTTPURLResponse::makeSharing(call.job.url, 200, entry.httpVersion, entry.headers);
  if (!response) {
    call.completion(std::nullopt, std::nullopt, badResponse(call.job.url));
    return;
  }
  std::optional<std::string> body;
  if (!entry.body->empty()) body = *entry.body;
  call.completion(std::move(body), std::move(response), std::nullopt);
}

bool RequestExecutor::answerStaleInstead(const Call& call, const platform::Error& error) {
  const double now = nowSeconds();
  const double maxStale = static_cast<double>(services_.maxStaleAge().count());
  if (!call.stale || !serviceUnreachable(error) ||
      !call.stale->mayStandInWhenUnreachable(now, maxStale)) {
    return false;
  }
  const HttpCacheEntry& entry = *call.stale;
  // Marked the way a shared cache marks a stale answer, so that a caller
  // that reads the response can tell it from a fresh one.
  HttpHeaderFields headers = *entry.headers;
  headers.insert_or_assign("Age", std::to_string(entry.ageAt(now)));
  headers.insert_or_assign("Warning", "111 - \"Revalidation Failed\"");
  auto response = HTTPURLResponse::make(call.job.url, 200, entry.httpVersion, std::move(headers));
  if (!response) return false;
  CoreLogger::info(fmt::format("{} cannot be reached ({}); answering with the copy stored {} s ago",
                               call.job.url, error.localizedDescription(), entry.ageAt(now)));
  announceStaleAnswer(call.job.url, entry.storedAt);
  std::optional<std::string> body;
  if (!entry.body->empty()) body = *entry.body;
  call.completion(std::move(body), std::move(response), std::nullopt);
  return true;
}

void RequestExecutor::announceStaleAnswer(const std::string& url, double storedAt) {
  // On the main queue, ahead of the answer's callback posted after it.
  services_.mainQueue()->post([url, storedAt] {
    platform::NotificationCenter::defaultCenter().post(
        kStaleAnswerNotification, nullptr,
        {{kStaleAnswerURLKey, url}, {kStaleAnswerStoredAtKey, storedAt}});
  });
}

void RequestExecutor::storeAnswer(const Call& call, const HTTPURLResponse& response,
                                  const std::string& body) {
  if (response.statusCode() != 200) return;
  const auto cached = transformed(call.job.cachingDelegate, CachedURLResponse(response, body));
  if (auto entry = HttpCacheEntry::fromResponse(cached, nowSeconds())) {
    services_.httpCache().store(call.cacheKey, std::move(*entry));
  } else {
    // no-store, or nothing to use it with: an older copy must not be served.
    services_.httpCache().remove(call.cacheKey);
  }
}

void RequestExecutor::refreshAfterNotModified(const Call& call,
                                              const TransportResponse& notModified) {
  const HttpCacheEntry& stored = *call.revalidating;
  // The 304's header fields replace the stored ones of the same name; then
  // the delegate has its say again, as for a new answer.
  HttpHeaderFields headers = *stored.headers;
  for (const auto& [name, value] : notModified.headers) {
    if (equalsIgnoringCase(name, "Content-Length") ||
        equalsIgnoringCase(name, "Content-Encoding") ||
        equalsIgnoringCase(name, "Transfer-Encoding")) {
      continue;
    }
    headers.insert_or_assign(name, value);
  }
  auto merged = HTTPURLResponse::make(call.job.url, 200, stored.httpVersion, std::move(headers));
  if (!merged) {
    call.completion(std::nullopt, std::nullopt, badResponse(call.job.url));
    return;
  }
  const auto cached =
      transformed(call.job.cachingDelegate, CachedURLResponse(*merged, stored.body));
  if (auto entry = HttpCacheEntry::fromResponse(cached, nowSeconds())) {
    services_.httpCache().store(call.cacheKey, *entry);
    answerFromCache(call, *entry);
    return;
  }
  services_.httpCache().remove(call.cacheKey);
  answerFromCache(call, stored);
}

}  // namespace quorvel
