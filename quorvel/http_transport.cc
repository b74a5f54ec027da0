#include "quorvel/http_transport.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <string_view>
#include <vector>

#include <curl/curl.h>
#include <fmt/format.h>

#include "quorvel/core_logger.h"
#include "quorvel/platform/transport_error.h"

namespace quorvel {
namespace {

using platform::TransportError;
using platform::TransportErrorCode;

platform::Error cancelledError() {
  return TransportError::make(TransportErrorCode::kCancelled, "the transport was shut down");
}

TransportErrorCode mapCurlCode(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return TransportErrorCode::kTimedOut;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return TransportErrorCode::kCannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return TransportErrorCode::kCannotConnectToHost;
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return TransportErrorCode::kNetworkConnectionLost;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT:
      return TransportErrorCode::kSecureConnectionFailed;
    case CURLE_FILESIZE_EXCEEDED:
      return TransportErrorCode::kDataLengthExceedsMaximum;
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      return TransportErrorCode::kBadURL;
    case CURLE_WEIRD_SERVER_REPLY:
      return TransportErrorCode::kBadServerResponse;
    default:
      return TransportErrorCode::kUnknown;
  }
}

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' ||
                           text.back() == '\n')) {
    text.remove_suffix(1);
  }
  return text;
}

std::string versionText(long curlVersion) {
  switch (curlVersion) {
    case CURL_HTTP_VERSION_1_0:
      return "1.0";
    case CURL_HTTP_VERSION_2_0:
      return "2";
    case CURL_HTTP_VERSION_3:
      return "3";
    default:
      return "1.1";
  }
}

// One request on the wire: its easy handle and what it collects.
struct Transfer {
  CURL* easy = nullptr;
  curl_slist* headerList = nullptr;
  HttpTransport::Completion completion;
  TransportResponse response;
  std::size_t maxBytes = 0;
  bool tooLarge = false;
  char errorBuffer[CURL_ERROR_SIZE] = {};
};

std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user) {
  auto* transfer = static_cast<Transfer*>(user);
  const std::size_t bytes = size * count;
  if (transfer->response.body.size() + bytes > transfer->maxBytes) {
    transfer->tooLarge = true;
    return 0;  // makes curl stop with CURLE_WRITE_ERROR
  }
  transfer->response.body.append(data, bytes);
  return bytes;
}

std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user) {
  auto* transfer = static_cast<Transfer*>(user);
  const std::size_t bytes = size * count;
  const std::string_view line(data, bytes);
  if (line.rfind("HTTP/", 0) == 0) {
    // A new status line (after an interim 1xx answer): start over.
    transfer->response.headers.clear();
    return bytes;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return bytes;
  const std::string name(trim(line.substr(0, colon)));
  const std::string value(trim(line.substr(colon + 1)));
  auto [it, inserted] = transfer->response.headers.try_emplace(name, value);
  if (!inserted) it->second += ", " + value;
  return bytes;
}

}  // namespace

// The state that only the transport's thread touches.
class HttpTransport::Worker {
 public:
  struct Pending {
    TransportRequest request;
    Completion completion;
  };

  explicit Worker(TransportLimits limits) : limits_(limits) {
    multi_ = curl_multi_init();
    curl_multi_setopt(multi_, CURLMOPT_PIPELINING, CURLPIPE_MULTIPLEX);
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
    share_ = curl_share_init();
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
    curl_share_setopt(share_, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  }

  ~Worker() {
    for (CURL* easy : idle_) curl_easy_cleanup(easy);
    curl_multi_cleanup(multi_);
    curl_share_cleanup(share_);
  }

  CURLM* multi() const { return multi_; }

  // Queues a request; false once stopping.
  bool enqueue(TransportRequest& request, Completion& completion) {
    std::lock_guard lock(mutex_);
    if (stopping_) return false;
    pending_.push_back(Pending{std::move(request), std::move(completion)});
    curl_multi_wakeup(multi_);
    return true;
  }

  // Marks the worker as stopping; false if it already was.
  bool stop() {
    std::lock_guard lock(mutex_);
    if (stopping_) return false;
    stopping_ = true;
    curl_multi_wakeup(multi_);
    return true;
  }

  std::deque<Pending> takeWaiting() {
    std::lock_guard lock(mutex_);
    std::deque<Pending> waiting;
    waiting.swap(pending_);
    return waiting;
  }

  void run() {
    while (true) {
      std::deque<Pending> incoming;
      {
        std::lock_guard lock(mutex_);
        if (stopping_) break;
        incoming.swap(pending_);
      }
      for (auto& pending : incoming) start(std::move(pending));
      int running = 0;
      curl_multi_perform(multi_, &running);
      collectFinished();
      curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
    }
    cancelActive();
  }

 private:
  CURL* takeEasy() {
    if (idle_.empty()) return curl_easy_init();
    CURL* easy = idle_.back();
    idle_.pop_back();
    // Keeps the handle's connection and caches, drops the options.
    curl_easy_reset(easy);
    return easy;
  }

  void giveBack(CURL* easy) {
    constexpr std::size_t kMaxIdle = 16;
    if (idle_.size() < kMaxIdle) {
      idle_.push_back(easy);
    } else {
      curl_easy_cleanup(easy);
    }
  }

  void configure(Transfer& transfer, const TransportRequest& request) {
    CURL* easy = transfer.easy;
    const auto& limits = limits_;
    curl_easy_setopt(easy, CURLOPT_URL, request.url.c_str());
    curl_easy_setopt(easy, CURLOPT_PRIVATE, &transfer);
    curl_easy_setopt(easy, CURLOPT_SHARE, share_);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, transfer.errorBuffer);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    // The parsed CA bundle is kept by the multi handle for a day, so only the
    // first TLS connection pays for reading it.
    curl_easy_setopt(easy, CURLOPT_CA_CACHE_TIMEOUT, 86'400L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(limits.connectTimeout.count()));
    curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(limits.requestTimeout.count()));
    curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(limits.maxResponseBytes));
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);

    switch (request.method) {
      case HttpMethod::get:
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
        break;
      case HttpMethod::post:
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        break;
      case HttpMethod::put:
      case HttpMethod::delete_:
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, httpMethodName(request.method));
        break;
    }
    if (request.body || request.method == HttpMethod::post) {
      const std::string& body = request.body ? *request.body : std::string();
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
      curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, body.c_str());
    }

    for (const auto& [name, value] : request.headers) {
      transfer.headerList =
          curl_slist_append(transfer.headerList, fmt::format("{}: {}", name, value).c_str());
    }
    // No "Expect: 100-continue" round trip before small JSON bodies.
    transfer.headerList = curl_slist_append(transfer.headerList, "Expect:");
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, transfer.headerList);
  }

  void start(Pending pending) {
    auto transfer = std::make_unique<Transfer>();
    transfer->easy = takeEasy();
    transfer->completion = std::move(pending.completion);
    transfer->maxBytes = limits_.maxResponseBytes;
    if (transfer->easy == nullptr) {
      transfer->completion(TransportError::make(TransportErrorCode::kUnknown, "curl_easy_init"));
      return;
    }
    configure(*transfer, pending.request);
    if (curl_multi_add_handle(multi_, transfer->easy) != CURLM_OK) {
      finish(std::move(transfer), CURLE_FAILED_INIT);
      return;
    }
    active_.push_back(std::move(transfer));
  }

  void collectFinished() {
    int left = 0;
    while (CURLMsg* message = curl_multi_info_read(multi_, &left)) {
      if (message->msg != CURLMSG_DONE) continue;
      CURL* easy = message->easy_handle;
      const CURLcode code = message->data.result;
      curl_multi_remove_handle(multi_, easy);
      const auto it = std::find_if(active_.begin(), active_.end(),
                                   [easy](const auto& t) { return t->easy == easy; });
      if (it == active_.end()) continue;
      auto transfer = std::move(*it);
      active_.erase(it);
      finish(std::move(transfer), code);
    }
  }

  platform::Result<TransportResponse> outcome(Transfer& transfer, CURLcode code) {
    if (transfer.tooLarge || code == CURLE_FILESIZE_EXCEEDED) {
      return TransportError::make(
          TransportErrorCode::kDataLengthExceedsMaximum,
          fmt::format("answer larger than {} bytes", limits_.maxResponseBytes));
    }
    if (code != CURLE_OK) {
      const std::string detail =
          transfer.errorBuffer[0] != '\0' ? transfer.errorBuffer : curl_easy_strerror(code);
      return TransportError::make(mapCurlCode(code), detail);
    }
    long status = 0;
    long version = 0;
    char* effectiveUrl = nullptr;
    curl_easy_getinfo(transfer.easy, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(transfer.easy, CURLINFO_HTTP_VERSION, &version);
    curl_easy_getinfo(transfer.easy, CURLINFO_EFFECTIVE_URL, &effectiveUrl);
    transfer.response.statusCode = status;
    transfer.response.httpVersion = versionText(version);
    transfer.response.url = effectiveUrl != nullptr ? effectiveUrl : "";
    return std::move(transfer.response);
  }

  void finish(std::unique_ptr<Transfer> transfer, CURLcode code) {
    auto result = outcome(*transfer, code);
    curl_slist_free_all(transfer->headerList);
    transfer->headerList = nullptr;
    auto completion = std::move(transfer->completion);
    giveBack(transfer->easy);
    transfer.reset();
    completion(std::move(result));
  }

  void cancelActive() {
    auto active = std::move(active_);
    active_.clear();
    for (auto& transfer : active) {
      curl_multi_remove_handle(multi_, transfer->easy);
      curl_slist_free_all(transfer->headerList);
      curl_easy_cleanup(transfer->easy);
      transfer->completion(cancelledError());
    }
  }

  TransportLimits limits_;
  // Guards the hand-over from submitting threads.
  std::mutex mutex_;
  std::deque<Pending> pending_;
  bool stopping_ = false;
  CURLM* multi_ = nullptr;
  CURLSH* share_ = nullptr;
  std::vector<CURL*> idle_;
  std::vector<std::unique_ptr<Transfer>> active_;
};

HttpTransport::HttpTransport(TransportLimits limits) : limits_(limits) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  worker_ = std::make_shared<Worker>(limits_);
  thread_ = std::thread([worker = worker_] { worker->run(); });
}

HttpTransport::~HttpTransport() {
  shutdown();
}

void HttpTransport::submit(TransportRequest request, Completion completion) {
  if (!worker_->enqueue(request, completion)) completion(cancelledError());
}

void HttpTransport::shutdown() {
  if (!worker_->stop()) return;
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
