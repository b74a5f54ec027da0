#include "bench/raw_client.h"

#include "bench/wire_figure.h"

namespace velmaro::bench {

namespace {

// The raw client drops the body unless asked for it: the figure is the
// transfer, not a parse.
std::size_t discard(char*, std::size_t size, std::size_t count, void*) {
  return size * count;
}

std::size_t append(char* data, std::size_t size, std::size_t count, void* body) {
  static_cast<std::string*>(body)->append(data, size * count);
  return size * count;
}

}  // namespace

RawClient::RawClient(const std::vector<std::pair<std::string, std::string>>& headers) {
  for (const auto& [name, value] : headers) {
    headers_ = curl_slist_append(headers_, (name + ": " + value).c_str());
  }
}

RawClient::~RawClient() {
  for (auto* easy : easies_) curl_easy_cleanup(easy);
  if (multi_ != nullptr) curl_multi_cleanup(multi_);
  curl_slist_free_all(headers_);
}

CURL* RawClient::configure(CURL* easy, const std::string& url) {
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, discard);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  return easy;
}

CURL* RawClient::keep(CURL* easy) {
  easies_.push_back(easy);
  return easy;
}

bool RawClient::get(const std::string& url, std::string* body) {
  if (single_ == nullptr) single_ = keep(configure(curl_easy_init(), url));
  if (body != nullptr) {
    body->clear();
    curl_easy_setopt(single_, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(single_, CURLOPT_WRITEDATA, body);
  } else {
    curl_easy_setopt(single_, CURLOPT_WRITEFUNCTION, discard);
  }
  long status = 0;
  const bool ok = curl_easy_perform(single_) == CURLE_OK;
  curl_easy_getinfo(single_, CURLINFO_RESPONSE_CODE, &status);
  return ok && status == 200;
}

bool RawClient::burst(const std::vector<std::string>& urls) {
  const int count = static_cast<int>(urls.size());
  if (multi_ == nullptr) {
    multi_ = curl_multi_init();
    // The same per-host connection policy as the library's transport, so
    // that the burst compares the libraries, not two connection policies.
    curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
    for (const auto& url : urls) pool_.push_back(keep(configure(curl_easy_init(), url)));
  }
  for (auto* easy : pool_) curl_multi_add_handle(multi_, easy);
  int running = 0;
  int done = 0;
  bool allOk = true;
  const auto deadline = Clock::now() + std::chrono::seconds(30);
  do {
    curl_multi_perform(multi_, &running);
    int queued = 0;
    while (CURLMsg* msg = curl_multi_info_read(multi_, &queued)) {
      if (msg->msg != CURLMSG_DONE) continue;
      long status = 0;
      curl_easy_getinfo(msg->easy_handle, CURLINFO_RESPONSE_CODE, &status);
      allOk = allOk && msg->data.result == CURLE_OK && status == 200;
      curl_multi_remove_handle(multi_, msg->easy_handle);
      ++done;
    }
    if (running > 0) curl_multi_poll(multi_, nullptr, 0, 100, nullptr);
  } while ((running > 0 || done < count) && Clock::now() < deadline);
  return allOk && done == count;
}

}  // namespace velmaro::bench
