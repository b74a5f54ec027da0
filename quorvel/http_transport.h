#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "quorvel/platform/result.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/transport_request.h"

namespace quorvel {

class TransportWorker;

// Runs HTTP requests with libcurl's multi interface on one thread of its own,
// so that every request shares one connection pool, DNS cache, TLS session
// cache and CA store. That thread waits for the sockets and the timers and
// sets up every new connection (name lookup, connect, TLS handshake). A
// request that can go out on an idle kept-alive connection is sent from the
// submitting thread itself, when no other thread is driving libcurl at that
// moment: waking the transport's thread first would cost more than the send.
// When the host's main queue is a RunLoop, requests sent that way from the
// thread that pumps it are also finished there: the loop watches their
// connections while it sleeps, so that the answer wakes the thread that will
// use it (attach()). Completions run on the transport's thread, on that
// loop's thread, or, once shut down, on the caller's; they must be quick:
// they hand the result on to a queue. Every submitted request is completed
// exactly once.
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

  // Lets `loop` finish the requests its pumping thread sends on kept-alive
  // connections; until shutdown.
  void attach(const std::shared_ptr<platform::RunLoop>& loop);

  // Stops the thread; requests in flight or waiting are completed with the
  // cancelled error. Idempotent.
  void shutdown();

  const TransportLimits& limits() const { return limits_; }

 private:
  TransportLimits limits_;
  // Shared with the thread, so that a shutdown from one of the transport's
  // own completions leaves nothing dangling behind the detached thread.
  std::shared_ptr<TransportWorker> worker_;
  std::thread thread_;
  std::weak_ptr<platform::RunLoop> hostLoop_;
  std::shared_ptr<platform::RunLoopSource> hostSource_;
};

}  // namespace quorvel
