#include "quorvel/easy_handle_pool.h"

#include "quorvel/http_transfer.h"

namespace quorvel {

EasyHandlePool::~EasyHandlePool() {
  for (CURL* easy : idle_) curl_easy_cleanup(easy);
}

CURL* EasyHandlePool::take() {
  if (!idle_.empty()) {
    CURL* easy = idle_.back();
    idle_.pop_back();
    return easy;
  }
  CURL* easy = curl_easy_init();
  if (easy != nullptr) HttpTransfer::configureHandle(easy, limits_, share_, sockets_);
  return easy;
}

void EasyHandlePool::giveBack(CURL* easy) {
  curl_easy_setopt(easy, CURLOPT_PRIVATE, nullptr);
  if (idle_.size() < kMaxIdle) {
    idle_.push_back(easy);
  } else {
    curl_easy_cleanup(easy);
  }
}

}  // namespace quorvel
