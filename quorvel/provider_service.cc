#include "quorvel/provider_service.h"

#include <string>

#include <fmt/format.h>

#include "quorvel/core_services.h"
#include "quorvel/core_version.h"
#include "quorvel/platform/serial_thread_queue.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/transfer_handle.h"

namespace quorvel {
namespace {

using Headers = std::vector<std::pair<std::string, std::string>>;

void setHeader(Headers& headers, const std::string& name, const std::string& value) {
  for (auto& header : headers) {
    if (equalsIgnoringCase(header.first, name)) {
      header.second = value;
      return;
    }
  }
  headers.emplace_back(name, value);
}

// Where callbacks go when there is neither a dispatch queue nor a live core
// to take the main queue from: a queue of its own, so that perform() still
// never calls back inside itself.
std::shared_ptr<platform::MainQueue> fallbackQueue() {
  static const auto queue = std::make_shared<platform::SerialThreadQueue>("quorvel-fallback");
  return queue;
}

// The two client values every request carries, formatted once per client
// and version on each thread rather than on every call.
struct ClientValues {
  std::string client;
  std::string version;
  std::string userAgent;
  std::string qvClient;
};

const ClientValues& clientValues(const std::string& client, const std::string& version) {
  thread_local ClientValues last;
  if (last.userAgent.empty() || last.client != client || last.version != version) {
    last = ClientValues{client, version,
                        fmt::format("{}/{} quorvel-core/{}", client, version, kCoreVersion),
                        fmt::format("{}/{}", client, version)};
  }
  return last;
}

}  // namespace

ProviderService::ProviderService(AccountDetails environment, std::string urlComponent,
                                 bool requiresAuth, HttpMethod httpMethod,
                                 std::shared_ptr<const ClientHeaders> clientHeaders,
                                 std::optional<std::string> body,
                                 std::shared_ptr<platform::MainQueue> dispatchQueue,
                                 Reporter reporter,
                                 std::shared_ptr<CachedHTTPURLResponseDelegate> cachingDelegate)
    : environment_(std::move(environment)),
      urlComponent_(std::move(urlComponent)),
      requiresAuth_(requiresAuth),
      httpMethod_(httpMethod),
      clientHeaders_(std::move(clientHeaders)),
      body_(std::move(body)),
      dispatchQueue_(std::move(dispatchQueue)),
      reporter_(reporter),
      cachingDelegate_(std::move(cachingDelegate)) {}

Headers ProviderService::clientIdentificationHeaders() const {
  const std::string client = clientHeaders_ ? clientHeaders_->client() : std::string("quorvel");
  const std::string version =
      clientHeaders_ ? clientHeaders_->version() : std::string(kCoreVersion);
  const ClientValues& values = clientValues(client, version);
  return {
      {"User-Agent", values.userAgent},      {"X-QV-Client", values.qvClient},
      {"X-QV-App-Id", environment_.appId()}, {"X-QV-Client-Id", environment_.clientId()},
      {"Accept", "application/json"},
  };
}

Headers ProviderService::headers() const {
  return withOwnHeaders(clientIdentificationHeaders());
}

Headers ProviderService::withOwnHeaders(Headers headers) const {
  const auto additional =
      clientHeaders_ ? clientHeaders_->additionalHeaders() : std::map<std::string, std::string>();
  const bool ownContentType = std::any_of(additional.begin(), additional.end(), [](const auto& h) {
    return equalsIgnoringCase(h.first, "Content-Type");
  });
  if (body_ && !ownContentType) headers.emplace_back("Content-Type", "application/json");
  for (const auto& [name, value] : additional) {
    // The core owns authentication.
    if (equalsIgnoringCase(name, "Authorization")) continue;
    setHeader(headers, name, value);
  }
  return headers;
}

void ProviderService::removeCachedAnswer() const {
  if (const auto services = environment_.services()) {
    services->executor().removeCached(urlComponent_, requiresAuth_);
  }
}

void ProviderService::perform(Callback callback) const {
  const auto services = environment_.services();
  auto queue = dispatchQueue_;
  if (!queue && services) queue = services->mainQueue();
  if (!queue) queue = fallbackQueue();

  // Called once: the callback moves on into the posted task rather than being
  // copied there (it holds the whole chain of the caller's closures).
  auto deliver = [queue, callback = std::move(callback)](
                     std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                     std::optional<platform::Error> error) mutable {
    if (!callback) return;
    queue->post([callback = std::move(callback), data = std::move(data),
                 response = std::move(response), error = std::move(error)]() mutable {
      callback(std::move(data), std::move(response), std::move(error));
    });
  };

  if (!services) {
    deliver(std::nullopt, std::nullopt,
            platform::TransportError::make(platform::TransportErrorCode::kCancelled,
                                           "the core library has shut down"));
    return;
  }
  if (!HTTPURLResponse::acceptsURL(urlComponent_)) {
    deliver(std::nullopt, std::nullopt,
            platform::TransportError::make(platform::TransportErrorCode::kBadURL, urlComponent_));
    return;
  }
  RequestExecutor::Job job;
  job.url = urlComponent_;
  job.method = httpMethod_;
  job.requiresAuth = requiresAuth_;
  // Only the token exchange needs the client headers alone: without it they
  // move on into the request's own.
  auto clientHeaders = clientIdentificationHeaders();
  if (requiresAuth_) {
    job.headers = withOwnHeaders(clientHeaders);
    job.clientHeaders = std::move(clientHeaders);
  } else {
    job.headers = withOwnHeaders(std::move(clientHeaders));
  }
  job.body = body_;
  job.cachingDelegate = cachingDelegate_;
  job.transfer = transfer_;
  if (transfer_ && transfer_->handle) transfer_->handle->deliverOn(queue);
  services->executor().execute(std::move(job), std::move(deliver));
}

}  // namespace quorvel
