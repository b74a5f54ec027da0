#include "quorvel/transport_worker.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "quorvel/core_logger.h"
#include "quorvel/http_transfer.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/transfer_handle.h"

namespace quorvel {
namespace {

using platform::TransportError;
using platform::TransportErrorCode;

// How long a transfer sent for the host's loop outside its pumps waits for
// the loop before the transport's thread watches it instead.
constexpr std::chrono::milliseconds kHostGrace{5};

// Connections libcurl opens to one origin, and transfers to one origin it is
// given at once. Transfers beyond that wait in the transport's own queue:
// libcurl's queue of transfers waiting for a connection costs it about as
// much again per transfer as the transfer itself.
constexpr std::size_t kMaxPerOrigin = 6;

}  // namespace

platform::Error TransportWorker::cancelledError() {
  return TransportError::make(TransportErrorCode::kCancelled, "the transport was shut down");
}

TransportWorker::TransportWorker(TransportLimits limits) : limits_(limits) {
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

TransportWorker::~TransportWorker() {
  pool_.reset();
  curl_multi_cleanup(multi_);
  curl_share_cleanup(share_);
}

bool TransportWorker::submit(TransportRequest& request, Completion& completion) {
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

void TransportWorker::cancelRequested() {
  cancelSweep_.store(true);
  poller_.wake();
}

bool TransportWorker::stop() {
  {
    std::lock_guard lock(queueMutex_);
    if (stopping_.exchange(true)) return false;
  }
  poller_.wake();
  return true;
}

std::deque<TransportWorker::Pending> TransportWorker::takeWaiting() {
  std::lock_guard lock(queueMutex_);
  std::deque<Pending> waiting;
  waiting.swap(pending_);
  return waiting;
}

void TransportWorker::run() {
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

void TransportWorker::hostLoopEntered() {
  if (hostDepth_++ > 0) return;
  hostThread_.store(std::this_thread::get_id());
  poller_.reclaimHostSet();
}

void TransportWorker::hostLoopExited() {
  if (--hostDepth_ > 0) return;
  // Transfers still under way are the transport thread's until the loop
  // sleeps again.
  if (poller_.hostSetBusy()) poller_.lendHostSet();
}

void TransportWorker::hostPerform(std::span<const pollfd> ready) {
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

void TransportWorker::socketOpened(int socket, std::string_view origin) {
  ledger_.socketOpened(socket, origin);
  poller_.socketOpened(socket);
}

void TransportWorker::socketClosed(int socket) {
  ledger_.socketClosed(socket);
  poller_.socketClosed(socket);
}

std::vector<TransportWorker::Finished> TransportWorker::step(std::span<const epoll_event> events) {
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

bool TransportWorker::startWaiting() {
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

void TransportWorker::watchCancel(const TransportRequest& request) {
  if (!request.transfer || !request.transfer->handle) return;
  request.transfer->handle->onCancel([weak = weak_from_this()] {
    if (auto worker = weak.lock()) worker->cancelRequested();
  });
}

void TransportWorker::takeOutCancelled(std::vector<Finished>& finished) {
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

bool TransportWorker::onHostThread() const {
  return hostAttached_.load() && hostThread_.load() == std::this_thread::get_id();
}

void TransportWorker::act(const std::vector<TransportPoller::SocketEvent>& sockets) {
  int running = 0;
  for (const auto& socket : sockets) {
    curl_multi_socket_action(multi_, socket.socket, socket.curlEvents, &running);
  }
}

void TransportWorker::sendHere(Pending pending, bool forHost) {
  if (forHost && hostDepth_ == 0) startHostGrace();
  start(std::move(pending), forHost);
  int running = 0;
  curl_multi_socket_action(multi_, CURL_SOCKET_TIMEOUT, 0, &running);
  const std::size_t before = handedOver_.size();
  collectFinished(handedOver_);
  updateTimer();
  if (handedOver_.size() > before) poller_.wake();
}

void TransportWorker::start(Pending pending, bool forHost) {
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

void TransportWorker::collectFinished(std::vector<Finished>& finished) {
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

TransportWorker::Finished TransportWorker::finish(HttpTransfer& transfer, CURLcode code) {
  auto result = transfer.outcome(code);
  pool_->giveBack(transfer.releaseEasy());
  return Finished{transfer.takeCompletion(), std::move(result)};
}

void TransportWorker::deliver(std::vector<Finished> finished) {
  for (auto& done : finished) done.completion(std::move(done.result));
}

void TransportWorker::cancelActive() {
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

void TransportWorker::startHostGrace() {
  if (!hostGraceEnds_) hostGraceEnds_ = Clock::now() + kHostGrace;
}

void TransportWorker::endHostGraceIfDue() {
  if (!hostGraceEnds_ || Clock::now() < *hostGraceEnds_) return;
  hostGraceEnds_.reset();
  if (hostDepth_ == 0 && poller_.hostSetBusy()) poller_.lendHostSet();
}

void TransportWorker::updateTimer() {
  long milliseconds = -1;
  curl_multi_timeout(multi_, &milliseconds);
  // Once the loop pumps, the caller has shown it drives its own transfers.
  // The grace's timer is taken back too: left to fire, it would wake this
  // thread during some later call and let it race the loop for that answer.
  if (hostGraceEnds_ && hostDepth_.load() > 0) {
    hostGraceEnds_.reset();
    poller_.resetTimeout(milliseconds);
    return;
  }
  if (hostGraceEnds_) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*hostGraceEnds_ - Clock::now());
    const long grace = std::max<long>(0, static_cast<long>(left.count()));
    milliseconds = milliseconds < 0 ? grace : std::min(milliseconds, grace);
  }
  poller_.setTimeout(milliseconds);
}

int TransportWorker::onSocket(CURL* easy, curl_socket_t socket, int what, void* user, void*) {
  const HttpTransfer* transfer = what == CURL_POLL_REMOVE ? nullptr : HttpTransfer::of(easy);
  static_cast<TransportWorker*>(user)->poller_.watch(socket, what,
                                                     transfer != nullptr && transfer->forHost());
  return 0;
}

}  // namespace quorvel
