#include "quorvel/http_transport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <deque>
#include <iterator>
#include <mutex>
#include <optional>
#include <vector>

#include <curl/curl.h>

#include "quorvel/connection_ledger.h"
#include "quorvel/core_logger.h"
#include "quorvel/easy_handle_pool.h"
#include "quorvel/http_transfer.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/socket_observer.h"
#include "quorvel/transfer_handle.h"
#include "quorvel/transport_poller.h"
#include "quorvel/weak_run_loop_source.h"

namespace quorvel {
namespace {

using platform::TransportError;
using platform::TransportErrorCode;
using Clock = std::chrono::steady_clock;

// How long a transfer sent for the host's loop outside its pumps waits for
// the loop before the transport's thread watches it instead.
constexpr std::chrono::milliseconds kHostGrace{5};

// Connections libcurl opens to one origin, and transfers to one origin it is
// given at once. Transfers beyond that wait in the transport's own queue:
// libcurl's queue of transfers waiting for a connection costs it about as
// much again per transfer as the transfer itself.
constexpr std::size_t kMaxPerOrigin = 6;

platform::Error cancelledError() {
  return TransportError::make(TransportErrorCode::kCancelled, "the transport was shut down");
}

}  // namespace

// The libcurl state and the thread's loop. libcurl's handles are driven under
// `driveMutex_`, by the transport's thread or, for a send on an idle
// connection, by a submitting thread; the thread waits for events without it.
class HttpTransport::Worker : public SocketObserver, public std::enable_shared_from_this<Worker> {
 public:
  struct Pending {
    TransportRequest request;
    Completion completion;
  };

  explicit Worker(TransportLimits limits) : limits_(limits) {
    multi_ = curl_multi_init();
    curl_multi_setopt(multi_, CURLMOPT_PIPELINING, CURLPIPE_MULTIPLEX);
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(kMaxPerOrigin));
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, onSocket);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
    share_ = curl_share_init();
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    pool_ = std::make_unique<EasyHandlePool>(limits_, share_, *this);
  }

  ~Worker() override {
    pool_.reset();
    curl_multi_cleanup(multi_);
    curl_share_cleanup(share_);
  }

  bool ready() const { return poller_.ready() && multi_ != nullptr && share_ != nullptr; }

  // Sends the request from this thread when a connection to its origin is
  // idle and nobody else drives libcurl; else queues it for the transport's
  // thread. False once stopping (the caller completes it).
  bool submit(TransportRequest& request, Completion& completion) {
    if (stopping_.load()) return false;
    watchCancel(request);
    {
      std::unique_lock drive(driveMutex_, std::try_to_lock);
      if (drive.owns_lock() && !closed_ &&
          ledger_.hasIdleConnection(ConnectionLedger::originOf(request.url))) {
        sendHere(Pending{std::move(request), std::move(completion)}, onHostThread());
        return true;
      }
    }
    bool first = false;
    {
      std::lock_guard lock(queueMutex_);
      if (stopping_.load()) return false;
      first = pending_.empty();
      pending_.push_back(Pending{std::move(request), std::move(completion)});
    }
    // The thread takes the whole queue at once: a wake-up for the first
    // request is a wake-up for those that follow it before the thread looks.
    if (first) poller_.wake();
    return true;
  }

  // A cancelled transfer is taken out by the transport's thread, woken for it.
  void cancelRequested() {
    cancelSweep_.store(true);
    poller_.wake();
  }

  // Marks the worker as stopping; false if it already was.
  bool stop() {
    {
      std::lock_guard lock(queueMutex_);
      if (stopping_.exchange(true)) return false;
    }
    poller_.wake();
    return true;
  }

  std::deque<Pending> takeWaiting() {
    std::lock_guard lock(queueMutex_);
    std::deque<Pending> waiting;
    waiting.swap(pending_);
    return waiting;
  }

  void run() {
    std::array<epoll_event, 64> events{};
    while (!stopping_.load()) {
      const int count = poller_.wait(events, std::nullopt);
      if (count < 0) {
        // Nothing can complete any more: refuse new requests and cancel the
        // waiting ones rather than leave them unanswered.
        CoreLogger::error("the HTTP transport cannot wait for its sockets; it stops");
        stop();
        for (auto& pending : takeWaiting()) pending.completion(cancelledError());
        break;
      }
      if (stopping_.load()) break;
      deliver(step(std::span<const epoll_event>(events.data(), static_cast<std::size_t>(count))));
    }
    cancelActive();
  }

  // The host's run loop (through a WeakRunLoopSource), on the thread that pumps it.
  void attachHost() { hostAttached_.store(true); }

  void hostLoopEntered() {
    if (hostDepth_++ > 0) return;
    hostThread_.store(std::this_thread::get_id());
    poller_.reclaimHostSet();
  }

  void hostLoopExited() {
    if (--hostDepth_ > 0) return;
    // Transfers still under way are the transport thread's until the loop
    // sleeps again.
    if (poller_.hostSetBusy()) poller_.lendHostSet();
  }

  void hostDescriptors(std::vector<pollfd>& watched) { poller_.hostDescriptors(watched); }

  void hostPerform(std::span<const pollfd> ready) {
    std::vector<Finished> finished;
    {
      std::unique_lock drive(driveMutex_, std::try_to_lock);
      if (!drive.owns_lock()) {
        // The transport's thread is busy with libcurl (a TLS handshake, say):
        // it takes these sockets over rather than the loop waiting for it.
        poller_.lendHostSet();
        return;
      }
      act(poller_.sortHost(ready).sockets);
      collectFinished(finished);
      updateTimer();
      // A place came free: the transport's thread starts what waits for it.
      if (!finished.empty() && !waiting_.empty()) poller_.wake();
    }
    deliver(std::move(finished));
  }

  void socketOpened(int socket, std::string_view origin) override {
    ledger_.socketOpened(socket, origin);
    poller_.socketOpened(socket);
  }

  void socketClosed(int socket) override {
    ledger_.socketClosed(socket);
    poller_.socketClosed(socket);
  }

 private:
  struct Finished {
    Completion completion;
    platform::Result<TransportResponse> result;
  };

  // One turn of the thread's loop under the drive lock: the ready sockets,
  // the queued requests, libcurl's timers; what finished, to be completed
  // once the lock is let go.
  std::vector<Finished> step(std::span<const epoll_event> events) {
    std::lock_guard drive(driveMutex_);
    const auto ready = poller_.sort(events);
    act(ready.sockets);
    std::deque<Pending> incoming;
    {
      std::lock_guard lock(queueMutex_);
      incoming.swap(pending_);
    }
    for (auto& pending : incoming) waiting_.push_back(std::move(pending));
    auto finished = std::move(handedOver_);
    handedOver_.clear();
    if (cancelSweep_.exchange(false)) takeOutCancelled(finished);
    // Transfers that finish free a place for a waiting one: round and round
    // until neither happens.
    bool started = startWaiting();
    if (ready.timerDue || started) {
      int running = 0;
      curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
    }
    if (ready.timerDue) endHostGraceIfDue();
    for (;;) {
      const std::size_t before = finished.size();
      collectFinished(finished);
      if (finished.size() == before || !startWaiting()) break;
      int running = 0;
      curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
    }
    // Transfers that could not start (a file not readable, cancelled before
    // it started) are completed now, not at the next event.
    std::move(handedOver_.begin(), handedOver_.end(), std::back_inserter(finished));
    handedOver_.clear();
    updateTimer();
    return finished;
  }

  // Hands waiting requests to libcurl while their origins have room;
  // true when one was started.
  bool startWaiting() {
    bool started = false;
    for (auto it = waiting_.begin(); it != waiting_.end();) {
      if (ledger_.transfers(ConnectionLedger::originOf(it->request.url)) >= kMaxPerOrigin) {
        ++it;
        continue;
      }
      start(std::move(*it));
      it = waiting_.erase(it);
      started = true;
    }
    return started;
  }

  void watchCancel(const TransportRequest& request) {
    if (!request.transfer || !request.transfer->handle) return;
    request.transfer->handle->onCancel([weak = weak_from_this()] {
      if (auto worker = weak.lock()) worker->cancelRequested();
    });
  }

  // Cancelled transfers end at once, whether libcurl has them or they wait.
  void takeOutCancelled(std::vector<Finished>& finished) {
    std::erase_if(active_, [&](const std::unique_ptr<HttpTransfer>& transfer) {
      if (!transfer->cancelled()) return false;
      curl_multi_remove_handle(multi_, transfer->easy());
      ledger_.transferFinished(transfer->origin());
      finished.push_back(finish(*transfer, CURLE_ABORTED_BY_CALLBACK));
      return true;
    });
    std::erase_if(waiting_, [&](Pending& pending) {
      const auto& options = pending.request.transfer;
      if (!options || !options->handle || !options->handle->cancelled()) return false;
      finished.push_back(
          {std::move(pending.completion), TransportError::make(TransportErrorCode::kCancelled)});
      return true;
    });
  }

  bool onHostThread() const {
    return hostAttached_.load() && hostThread_.load() == std::this_thread::get_id();
  }

  // Lets libcurl handle what the sockets reported.
  void act(const std::vector<TransportPoller::SocketEvent>& sockets) {
    int running = 0;
    for (const auto& socket : sockets) {
      curl_multi_socket_action(multi_, socket.socket, socket.curlEvents, &running);
    }
  }

  // The caller's own send: the transfer starts and its request goes out
  // before this returns. What finishes meanwhile is completed by the
  // transport's thread, so that completions never run inside submit().
  void sendHere(Pending pending, bool forHost) {
    if (forHost && hostDepth_ == 0) startHostGrace();
    start(std::move(pending), forHost);
    int running = 0;
    curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
    const std::size_t before = handedOver_.size();
    collectFinished(handedOver_);
    updateTimer();
    if (handedOver_.size() > before) poller_.wake();
  }

  void start(Pending pending, bool forHost = false) {
    CURL* easy = pool_->take();
    if (easy == nullptr) {
      handedOver_.push_back(
          {std::move(pending.completion),
           TransportError::make(TransportErrorCode::kUnknown, "curl_easy_init failed")});
      return;
    }
    auto transfer = std::make_unique<HttpTransfer>(easy, std::move(pending.request),
                                                   std::move(pending.completion), *this, limits_);
    transfer->setForHost(forHost);
    if (auto error = transfer->prepare()) {
      pool_->giveBack(transfer->releaseEasy());
      handedOver_.push_back({transfer->takeCompletion(), std::move(*error)});
      return;
    }
    if (curl_multi_add_handle(multi_, easy) != CURLM_OK) {
      handedOver_.push_back(finish(*transfer, CURLE_FAILED_INIT));
      return;
    }
    ledger_.transferStarted(transfer->origin());
    active_.push_back(std::move(transfer));
  }

  void collectFinished(std::vector<Finished>& finished) {
    int left = 0;
    while (CURLMsg* message = curl_multi_info_read(multi_, &left)) {
      if (message->msg != CURLMSG_DONE) continue;
      CURL* easy = message->easy_handle;
      const CURLcode code = message->data.result;
      curl_multi_remove_handle(multi_, easy);
      const auto it = std::find_if(active_.begin(), active_.end(),
                                   [easy](const auto& t) { return t->easy() == easy; });
      if (it == active_.end()) continue;
      auto transfer = std::move(*it);
      active_.erase(it);
      ledger_.transferFinished(transfer->origin());
      finished.push_back(finish(*transfer, code));
    }
  }

  // The transfer's result, with its handle back in the idle pool.
  Finished finish(HttpTransfer& transfer, CURLcode code) {
    auto result = transfer.outcome(code);
    pool_->giveBack(transfer.releaseEasy());
    return Finished{transfer.takeCompletion(), std::move(result)};
  }

  static void deliver(std::vector<Finished> finished) {
    for (auto& done : finished) done.completion(std::move(done.result));
  }

  void cancelActive() {
    std::vector<Finished> finished;
    {
      std::lock_guard drive(driveMutex_);
      closed_ = true;
      finished = std::move(handedOver_);
      handedOver_.clear();
      for (auto& pending : waiting_) {
        finished.push_back({std::move(pending.completion), cancelledError()});
      }
      waiting_.clear();
      for (auto& transfer : active_) {
        curl_multi_remove_handle(multi_, transfer->easy());
        ledger_.transferFinished(transfer->origin());
        curl_easy_cleanup(transfer->releaseEasy());
        finished.push_back({transfer->takeCompletion(), cancelledError()});
      }
      active_.clear();
    }
    deliver(std::move(finished));
  }

  // A transfer for the host's loop sent while the loop is not pumping: most
  // likely the caller pumps it next. Lending the loop's sockets to this
  // thread at once would let it race the loop for the answer (and cost two
  // system calls a call), so the thread takes them over only if the loop has
  // not started pumping within a grace period: a caller that sends and then
  // blocks still gets its answer.
  void startHostGrace() {
    if (!hostGraceEnds_) hostGraceEnds_ = Clock::now() + kHostGrace;
  }

  void endHostGraceIfDue() {
    if (!hostGraceEnds_ || Clock::now() < *hostGraceEnds_) return;
    hostGraceEnds_.reset();
    if (hostDepth_ == 0 && poller_.hostSetBusy()) poller_.lendHostSet();
  }

  void updateTimer() {
    long milliseconds = -1;
    curl_multi_timeout(multi_, &milliseconds);
    if (hostGraceEnds_) {
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(*hostGraceEnds_ - Clock::now());
      const long grace = std::max<long>(0, static_cast<long>(left.count()));
      milliseconds = milliseconds < 0 ? grace : std::min(milliseconds, grace);
    }
    poller_.setTimeout(milliseconds);
  }

  static int onSocket(CURL* easy, curl_socket_t socket, int what, void* user, void*) {
    const HttpTransfer* transfer = what == CURL_POLL_REMOVE ? nullptr : HttpTransfer::of(easy);
    static_cast<Worker*>(user)->poller_.watch(socket, what,
                                              transfer != nullptr && transfer->forHost());
    return 0;
  }

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

HttpTransport::HttpTransport(TransportLimits limits) : limits_(limits) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  worker_ = std::make_shared<Worker>(limits_);
  if (!worker_->ready()) CoreLogger::error("the HTTP transport could not set up its event loop");
  thread_ = std::thread([worker = worker_] { worker->run(); });
}

HttpTransport::~HttpTransport() {
  shutdown();
}

void HttpTransport::submit(TransportRequest request, Completion completion) {
  if (!worker_->submit(request, completion)) completion(cancelledError());
}

void HttpTransport::attach(const std::shared_ptr<platform::RunLoop>& loop) {
  if (!loop || hostSource_) return;
  hostSource_ = std::make_shared<WeakRunLoopSource<Worker>>(worker_);
  hostLoop_ = loop;
  worker_->attachHost();
  loop->addSource(hostSource_);
}

void HttpTransport::shutdown() {
  if (!worker_->stop()) return;
  if (auto loop = hostLoop_.lock()) loop->removeSource(hostSource_);
  if (thread_.joinable()) {
    if (thread_.get_id() == std::this_thread::get_id()) {
      // Shut down from one of its own completions: the loop ends by itself
      // and the thread keeps the worker alive until then.
      thread_.detach();
    } else {
      thread_.join();
    }
  }
  for (auto& pending : worker_->takeWaiting()) pending.completion(cancelledError());
}

}  // namespace quorvel
