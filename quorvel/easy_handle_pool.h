#pragma once

#include <vector>

#include <curl/curl.h>

#include "quorvel/transport_request.h"

namespace quorvel {

class SocketObserver;

// The transport's idle easy handles, kept with the options every transfer
// shares already set (at most kMaxIdle). Used under the transport's drive lock.
class EasyHandlePool {
 public:
  static constexpr std::size_t kMaxIdle = 16;

  EasyHandlePool(const TransportLimits& limits, CURLSH* share, SocketObserver& sockets)
      : limits_(limits), share_(share), sockets_(sockets) {}
  // Closes the pooled connections, which reach the observer.
  ~EasyHandlePool();
  EasyHandlePool(const EasyHandlePool&) = delete;
  EasyHandlePool& operator=(const EasyHandlePool&) = delete;

  // An idle handle, or a new one; null when libcurl cannot make one.
  CURL* take();
  void giveBack(CURL* easy);

 private:
  const TransportLimits limits_;
  CURLSH* share_;
  SocketObserver& sockets_;
  std::vector<CURL*> idle_;
};

}  // namespace quorvel
