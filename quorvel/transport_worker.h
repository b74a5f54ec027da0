#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include <curl/curl.h>
#include <poll.h>
#include <sys/epoll.h>

#include "quorvel/connection_ledger.h"
#include "quorvel/easy_handle_pool.h"
#include "quorvel/platform/result.h"
#include "quorvel/socket_observer.h"
#include "quorvel/transport_poller.h"
#include "quorvel/transport_request.h"

namespace quorvel {

class HttpTransfer;

// The libcurl state and the thread's loop. libcurl's handles are driven under
// `driveMutex_`, by the transport's thread or, for a send on an idle
// connection, by a submitting thread; the thread waits for events without it.
class TransportWorker : public SocketObserver,
                        public std::enable_shared_from_this<TransportWorker> {
 public:
  using Completion = std::function<void(platform::Result<TransportResponse>)>;
  using Clock = std::chrono::steady_clock;

  struct Pending {
    TransportRequest request;
    Completion completion;
  };

  explicit TransportWorker(TransportLimits limits);

  ~TransportWorker() override;

  bool ready() const { return poller_.ready() && multi_ != nullptr && share_ != nullptr; }

  // Sends the request from this thread when a connection to its origin is
  // idle and nobody else drives libcurl; else queues it for the transport's
  // thread. False once stopping (the caller completes it).
  bool submit(TransportRequest& request, Completion& completion);

  // A cancelled transfer is taken out by the transport's thread, woken for it.
  void cancelRequested();

  // Marks the worker as stopping; false if it already was.
  bool stop();

  std::deque<Pending> takeWaiting();

  void run();

  // The host's run loop (through a WeakRunLoopSource), on the thread that pumps it.
  void attachHost() { hostAttached_.store(true); }

  void hostLoopEntered();

  void hostLoopExited();

  void hostDescriptors(std::vector<pollfd>& watched) { poller_.hostDescriptors(watched); }

  void hostPerform(std::span<const pollfd> ready);

  void socketOpened(int socket, std::string_view origin) override;

  void socketClosed(int socket) override;

  // What a request the worker can no longer send is completed with.
  static platform::Error cancelledError();

 private:
  struct Finished {
    Completion completion;
    platform::Result<TransportResponse> result;
  };

  // One turn of the thread's loop under the drive lock: the ready sockets,
  // the queued requests, libcurl's timers; what finished, to be completed
  // once the lock is let go.
  std::vector<Finished> step(std::span<const epoll_event> events);

  // Hands waiting requests to libcurl while their origins have room;
  // true when one was started.
  bool startWaiting();

  void watchCancel(const TransportRequest& request);

  // Cancelled transfers end at once, whether libcurl has them or they wait.
  void takeOutCancelled(std::vector<Finished>& finished);

  bool onHostThread() const;

  // Lets libcurl handle what the sockets reported.
  void act(const std::vector<TransportPoller::SocketEvent>& sockets);

  // The caller's own send: the transfer starts and its request goes out
  // before this returns. What finishes meanwhile is completed by the
  // transport's thread, so that completions never run inside submit().
  void sendHere(Pending pending, bool forHost);

  void start(Pending pending, bool forHost = false);

  void collectFinished(std::vector<Finished>& finished);

  // The transfer's result, with its handle back in the idle pool.
  Finished finish(HttpTransfer& transfer, CURLcode code);

  static void deliver(std::vector<Finished> finished);

  void cancelActive();

  // A transfer for the host's loop sent while the loop is not pumping: most
  // likely the caller pumps it next. Lending the loop's sockets to this
  // thread at once would let it race the loop for the answer (and cost two
  // system calls a call), so the thread takes them over only if the loop has
  // not started pumping within a grace period: a caller that sends and then
  // blocks still gets its answer.
  void startHostGrace();

  void endHostGraceIfDue();

  void updateTimer();

  static int onSocket(CURL* easy, curl_socket_t socket, int what, void* user, void*);

  const TransportLimits limits_;
  TransportPoller poller_;
  std::atomic<bool> stopping_{false};

  // The host's run loop: whether there is one, the thread that pumps it and
  // how deeply (only that thread changes the depth).
  std::atomic<bool> hostAttached_{false};
  std::atomic<std::thread::id> hostThread_{};
  std::atomic<int> hostDepth_{0};

  // Guards the hand-over of requests that wait for the thread.
  std::mutex queueMutex_;
  std::deque<Pending> pending_;

  // Guards everything below, and the poller's state; taken before
  // queueMutex_ when both are held.
  std::mutex driveMutex_;
  CURLM* multi_ = nullptr;
  CURLSH* share_ = nullptr;
  ConnectionLedger ledger_;
  std::unique_ptr<EasyHandlePool> pool_;
  std::atomic<bool> cancelSweep_{false};
  std::vector<std::unique_ptr<HttpTransfer>> active_;
  // Finished while a submitting thread drove libcurl: the thread completes them.
  std::vector<Finished> handedOver_;
  // Requests taken from the queue whose origin has no room yet, in order.
  std::deque<Pending> waiting_;
  // When the grace for transfers sent outside the loop's pumps ends.
  std::optional<Clock::time_point> hostGraceEnds_;
  bool closed_ = false;  // the thread has ended; nothing may start
};

}  // namespace quorvel
