#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <curl/curl.h>

#include "quorvel/platform/result.h"
#include "quorvel/transfer_files.h"
#include "quorvel/transport_request.h"

namespace quorvel {

class SocketObserver;

// One request on the wire: the easy handle it runs on, its header list and
// what it collects. Easy handles are kept and reused between transfers with
// the options every transfer shares already set (configureHandle), so that a
// transfer sets only what is its own (prepare).
class HttpTransfer {
 public:
  using Completion = std::function<void(platform::Result<TransportResponse>)>;

  HttpTransfer(CURL* easy, TransportRequest request, Completion completion, SocketObserver& sockets,
               const TransportLimits& limits);
  ~HttpTransfer();
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  // The options every transfer of a transport shares: limits, TLS, the
  // shared caches and the observer of sockets.
  static void configureHandle(CURL* easy, const TransportLimits& limits, CURLSH* share,
                              SocketObserver& sockets);

  // Sets this transfer's own options on its handle; an error when it cannot
  // start (its body's file cannot be read, or it was cancelled already).
  std::optional<platform::Error> prepare();
  // The caller cancelled it.
  bool cancelled() const;

  // What the finished transfer answers, given libcurl's result code.
  platform::Result<TransportResponse> outcome(CURLcode code);

  CURL* easy() const { return easy_; }
  // Hands the easy handle over (to be reused); the transfer no longer has one.
  CURL* releaseEasy();
  const std::string& origin() const { return origin_; }
  // Finished by the host's run loop rather than the transport's thread.
  bool forHost() const { return forHost_; }
  void setForHost(bool forHost) { forHost_ = forHost; }
  // The transfer a handle runs, or null.
  static HttpTransfer* of(CURL* easy);
  Completion takeCompletion() { return std::move(completion_); }

 private:
  static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user);
  static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user);
  static curl_socket_t openSocket(void* user, curlsocktype purpose, curl_sockaddr* address);
  static int onProgress(void* user, curl_off_t downloadTotal, curl_off_t downloaded,
                        curl_off_t uploadTotal, curl_off_t uploaded);
  // The body, the timeouts and the progress of a transfer with options.
  std::optional<platform::Error> prepareBody();
  void prepareHeaderList();
  void prepareLimits();
  bool sendsBody() const;
  // A 2xx answer of a download to a file goes to the file.
  bool bodyToFile() const;
  void reportFinal();

  CURL* easy_;
  TransportRequest request_;
  Completion completion_;
  SocketObserver& sockets_;
  std::string origin_;
  std::chrono::milliseconds requestTimeout_;
  std::size_t maxResponseBytes_;
  std::size_t received_ = 0;
  std::unique_ptr<TransferFiles> files_;
  bool writeFailed_ = false;
  // The request's header lines, NUL after each, and the list libcurl reads
  // them through: built in two allocations rather than two a line.
  std::string headerLines_;
  std::vector<curl_slist> headerList_;
  TransportResponse response_;
  bool tooLarge_ = false;
  bool forHost_ = false;
  char errorBuffer_[CURL_ERROR_SIZE] = {};
};

}  // namespace quorvel
