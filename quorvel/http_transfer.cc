#include "quorvel/http_transfer.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>
#include <sys/socket.h>
#include <unistd.h>

#include "quorvel/connection_ledger.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/socket_observer.h"
#include "quorvel/transfer_handle.h"

namespace quorvel {
namespace {

using platform::TransportError;
using platform::TransportErrorCode;

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
    case CURLE_ABORTED_BY_CALLBACK:
      return TransportErrorCode::kCancelled;
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

// libcurl refuses an answer that does not begin as HTTP (it takes it for an
// HTTP/0.9 reply) with the code it also gives a scheme it will not speak;
// only the refused answer comes after a connection was made.
bool answeredNotHttp(CURL* easy, CURLcode code) {
  if (code == CURLE_WEIRD_SERVER_REPLY) return true;
  if (code != CURLE_UNSUPPORTED_PROTOCOL) return false;
  char* ip = nullptr;
  return curl_easy_getinfo(easy, CURLINFO_PRIMARY_IP, &ip) == CURLE_OK && ip != nullptr &&
         *ip != '\0';
}

constexpr long kFileBufferBytes = 256L * 1024L;

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

int closeSocket(void* user, curl_socket_t socket) {
  static_cast<SocketObserver*>(user)->socketClosed(socket);
  return ::close(socket);
}

// A CR or LF would end the header line and start another one of the
// value's choosing; libcurl would cut the line at a NUL.
std::optional<platform::Error> unsafeHeader(
    const std::vector<std::pair<std::string, std::string>>& headers) {
  for (const auto& header : headers) {
    for (const std::string* text : {&header.first, &header.second}) {
      // A plain scan: find_first_of calls memchr once per character.
      if (std::any_of(text->begin(), text->end(),
                      [](char c) { return c == '\r' || c == '\n' || c == '\0'; })) {
        return TransportError::make(
            TransportErrorCode::kUnknown,
            fmt::format("the header field {:?} holds a line break or NUL; nothing was sent",
                        header.first));
      }
    }
  }
  return std::nullopt;
}

// Room for the fields of most answers, so that the list is allocated once.
constexpr std::size_t kUsualHeaderFields = 8;

}  // namespace

HttpTransfer::HttpTransfer(CURL* easy, TransportRequest request, Completion completion,
                           SocketObserver& sockets, const TransportLimits& limits)
    : easy_(easy),
      request_(std::move(request)),
      completion_(std::move(completion)),
      sockets_(sockets),
      origin_(ConnectionLedger::originOf(request_.url)),
      requestTimeout_(limits.requestTimeout),
      maxResponseBytes_(limits.maxResponseBytes) {
  if (request_.transfer && request_.transfer->maxResponseBytes) {
    maxResponseBytes_ = *request_.transfer->maxResponseBytes;
  }
}

bool HttpTransfer::cancelled() const {
  return request_.transfer && request_.transfer->handle && request_.transfer->handle->cancelled();
}

bool HttpTransfer::sendsBody() const {
  return request_.body || request_.method == HttpMethod::post ||
         (request_.transfer && request_.transfer->uploadFile);
}

HttpTransfer::~HttpTransfer() = default;

HttpTransfer* HttpTransfer::of(CURL* easy) {
  char* transfer = nullptr;
  if (easy == nullptr || curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer) != CURLE_OK) {
    return nullptr;
  }
  return reinterpret_cast<HttpTransfer*>(transfer);
}

CURL* HttpTransfer::releaseEasy() {
  CURL* easy = easy_;
  easy_ = nullptr;
  return easy;
}

void HttpTransfer::configureHandle(CURL* easy, const TransportLimits& limits, CURLSH* share,
                                   SocketObserver& sockets) {
  curl_easy_setopt(easy, CURLOPT_SHARE, share);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, onBody);
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, onHeader);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, openSocket);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, closeSocket);
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, &sockets);
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
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
}

std::optional<platform::Error> HttpTransfer::prepare() {
  if (cancelled()) return TransportError::make(TransportErrorCode::kCancelled);
  if (auto error = unsafeHeader(request_.headers)) return error;
  CURL* easy = easy_;
  curl_easy_setopt(easy, CURLOPT_URL, request_.url.c_str());
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorBuffer_);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);

  // A reused handle still holds the method of its previous transfer: every
  // transfer states its own. CUSTOMREQUEST names the verb of PUT and DELETE;
  // a body (or a POST) makes libcurl send the fields, anything else is a GET.
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST,
                   request_.method == HttpMethod::put || request_.method == HttpMethod::delete_
                       ? httpMethodName(request_.method)
                       : nullptr);
  if (auto error = prepareBody()) return error;
  prepareLimits();

  prepareHeaderList();
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headerList_.data());
  return std::nullopt;
}

void HttpTransfer::prepareHeaderList() {
  // No "Expect: 100-continue" round trip before small JSON bodies.
  static constexpr std::string_view kNoExpect = "Expect:";
  std::size_t bytes = kNoExpect.size() + 1;
  for (const auto& [name, value] : request_.headers) bytes += name.size() + value.size() + 3;
  headerLines_.reserve(bytes);
  for (const auto& [name, value] : request_.headers) {
    headerLines_.append(name).append(": ").append(value).push_back('\0');
  }
  headerLines_.append(kNoExpect).push_back('\0');
  // libcurl only reads the list (it is not given to curl_slist_free_all), so
  // the nodes may live in a vector and point into the lines.
  headerList_.resize(request_.headers.size() + 1);
  char* line = headerLines_.data();
  for (std::size_t i = 0; i < headerList_.size(); ++i) {
    headerList_[i].data = line;
    headerList_[i].next = i + 1 < headerList_.size() ? &headerList_[i + 1] : nullptr;
    line += std::char_traits<char>::length(line) + 1;
  }
}

std::optional<platform::Error> HttpTransfer::prepareBody() {
  CURL* easy = easy_;
  const TransferOptions* options = request_.transfer.get();
  if (options && options->downloadFile) {
    files_ = std::make_unique<TransferFiles>();
    files_->downloadTo(*options->downloadFile);
  }
  if (options && options->uploadFile) {
    if (!files_) files_ = std::make_unique<TransferFiles>();
    if (auto error = files_->openUpload(*options->uploadFile)) return error;
    // The same request as an in-memory body, read from the file as libcurl
    // sends it: no copy of the file is held.
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, nullptr);
    curl_easy_setopt(easy, CURLOPT_POST, 1L);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, files_->uploadSize());
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, &TransferFiles::read);
    curl_easy_setopt(easy, CURLOPT_READDATA, files_.get());
    curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, &TransferFiles::seek);
    curl_easy_setopt(easy, CURLOPT_SEEKDATA, files_.get());
  } else if (request_.body || request_.method == HttpMethod::post) {
    const std::string& body = request_.body ? *request_.body : std::string();
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(easy, CURLOPT_COPYPOSTFIELDS, body.c_str());
  } else {
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
  }
  return std::nullopt;
}

void HttpTransfer::prepareLimits() {
  CURL* easy = easy_;
  curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maxResponseBytes_));
  const bool observed = request_.transfer && request_.transfer->handle;
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, observed ? 0L : 1L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, observed ? &HttpTransfer::onProgress : nullptr);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
  // A large file on a slow network may take longer than any fixed time: a
  // transfer with options ends when it has moved nothing for the request
  // time-out instead.
  const long timeout = static_cast<long>(requestTimeout_.count());
  const bool streaming = request_.transfer != nullptr;
  curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, streaming ? 0L : timeout);
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, streaming ? 1L : 0L);
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, streaming ? std::max(1L, timeout / 1000) : 0L);
  // Larger reads for files: a quarter of the callbacks and system calls of
  // libcurl's 16 KiB default, which cost a 50 MB download ~10 % of its speed.
  curl_easy_setopt(easy, CURLOPT_BUFFERSIZE,
                   streaming ? kFileBufferBytes : long{CURL_MAX_WRITE_SIZE});
}

bool HttpTransfer::bodyToFile() const {
  if (!files_ || !files_->downloading()) return false;
  long status = 0;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  return status >= 200 && status <= 299;
}

int HttpTransfer::onProgress(void* user, curl_off_t downloadTotal, curl_off_t downloaded,
                             curl_off_t uploadTotal, curl_off_t uploaded) {
  auto* transfer = static_cast<HttpTransfer*>(user);
  if (transfer->cancelled()) return 1;  // libcurl stops with CURLE_ABORTED_BY_CALLBACK
  if (transfer->sendsBody()) {
    transfer->request_.transfer->handle->report(uploaded, uploadTotal, false);
  } else {
    transfer->request_.transfer->handle->report(downloaded, downloadTotal, false);
  }
  return 0;
}

void HttpTransfer::reportFinal() {
  if (!request_.transfer || !request_.transfer->handle) return;
  curl_off_t bytes = 0;
  curl_easy_getinfo(easy_, sendsBody() ? CURLINFO_SIZE_UPLOAD_T : CURLINFO_SIZE_DOWNLOAD_T, &bytes);
  request_.transfer->handle->report(bytes, bytes, true);
}

platform::Result<TransportResponse> HttpTransfer::outcome(CURLcode code) {
  if (cancelled()) return TransportError::make(TransportErrorCode::kCancelled);
  if (writeFailed_) {
    return TransportError::make(TransportErrorCode::kCannotWriteToFile,
                                *request_.transfer->downloadFile);
  }
  if (tooLarge_ || code == CURLE_FILESIZE_EXCEEDED) {
    return TransportError::make(TransportErrorCode::kDataLengthExceedsMaximum,
                                fmt::format("answer larger than {} bytes", maxResponseBytes_));
  }
  if (code != CURLE_OK) {
    const std::string detail = errorBuffer_[0] != '\0' ? errorBuffer_ : curl_easy_strerror(code);
    if (answeredNotHttp(easy_, code)) return TransportError::notHttp(detail);
    return TransportError::make(mapCurlCode(code), detail);
  }
  long status = 0;
  long version = 0;
  char* effectiveUrl = nullptr;
  curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy_, CURLINFO_HTTP_VERSION, &version);
  curl_easy_getinfo(easy_, CURLINFO_EFFECTIVE_URL, &effectiveUrl);
  response_.statusCode = status;
  response_.httpVersion = versionText(version);
  response_.url = effectiveUrl != nullptr ? effectiveUrl : "";
  if (bodyToFile()) {
    if (auto error = files_->commit()) return *error;
  }
  reportFinal();
  return std::move(response_);
}

std::size_t HttpTransfer::onBody(char* data, std::size_t size, std::size_t count, void* user) {
  auto* transfer = static_cast<HttpTransfer*>(user);
  const std::size_t bytes = size * count;
  auto& body = transfer->response_.body;
  if (transfer->received_ + bytes > transfer->maxResponseBytes_) {
    transfer->tooLarge_ = true;
    return 0;  // makes curl stop with CURLE_WRITE_ERROR
  }
  transfer->received_ += bytes;
  if (transfer->bodyToFile()) {
    if (transfer->files_->write(data, bytes)) return bytes;
    transfer->writeFailed_ = true;
    return 0;
  }
  if (body.empty()) {
    // One allocation for an answer that states its length.
    curl_off_t length = -1;
    curl_easy_getinfo(transfer->easy_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    if (length > 0 && static_cast<std::size_t>(length) <= transfer->maxResponseBytes_) {
      body.reserve(static_cast<std::size_t>(length));
    }
  }
  body.append(data, bytes);
  return bytes;
}

std::size_t HttpTransfer::onHeader(char* data, std::size_t size, std::size_t count, void* user) {
  auto* transfer = static_cast<HttpTransfer*>(user);
  const std::size_t bytes = size * count;
  const std::string_view line(data, bytes);
  auto& headers = transfer->response_.headers;
  if (line.rfind("HTTP/", 0) == 0) {
    // A new status line (after an interim 1xx answer): start over.
    headers.clear();
    return bytes;
  }
  const auto colon = line.find(':');
  if (colon == std::string_view::npos) return bytes;
  const std::string_view name = trim(line.substr(0, colon));
  const std::string_view value = trim(line.substr(colon + 1));
  if (const auto it = headers.find(name); it != headers.end()) {
    it->second.append(", ").append(value);
  } else {
    if (headers.empty()) headers.reserve(kUsualHeaderFields);
    headers.emplace(std::string(name), std::string(value));
  }
  return bytes;
}

curl_socket_t HttpTransfer::openSocket(void* user, curlsocktype, curl_sockaddr* address) {
  auto* transfer = static_cast<HttpTransfer*>(user);
  // Close-on-exec, so that a child process the application starts does not
  // keep the service's connections open.
  const int socket = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  if (socket < 0) return CURL_SOCKET_BAD;
  // A new connection (the idle one it was sent for had been closed, say) is
  // set up by the transport's thread, never by the host's loop.
  transfer->forHost_ = false;
  transfer->sockets_.socketOpened(socket, transfer->origin_);
  return socket;
}

}  // namespace quorvel
