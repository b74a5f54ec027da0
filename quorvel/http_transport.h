#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "quorvel/platform/result.h"
#include "quorvel/transport_request.h"

namespace quorvel {

// Runs HTTP requests on one thread of its own with libcurl's multi interface,
// so that every request shares one connection cache, DNS cache, TLS session
// cache and CA store. Completions run on that thread (or, once shut down, on
// the caller's) and must be quick: they hand the result on to a queue.
// Every submitted request is completed exactly once.
class HttpTransport {
 public:
  using Completion = std::function<void(platform::Result<TransportResponse>)>;

  explicit HttpTransport(TransportLimits limits);
  // Shuts down.
  ~HttpTransport();
  HttpTransport(const HttpTransport&) = delete;
  HttpTransport& operator=(const HttpTransport&) = delete;

  // Safe from any thread, including from a completion. After shutdown the
  // request is completed at once with the cancelled error.
  void submit(TransportRequest request, Completion completion);

  // Stops the thread; requests in flight or waiting are completed with the
  // cancelled error. Idempotent.
  void shutdown();

  const TransportLimits& limits() const { return limits_; }

 private:
  class Worker;

  TransportLimits limits_;
  // Shared with the thread, so that a shutdown from one of the transport's
  // own completions leaves nothing dangling behind the detached thread.
  std::shared_ptr<Worker> worker_;
  std::thread thread_;
};

}  // namespace quorvel
