// A raw libcurl client with the headers the library sends: the baseline of
// the loopback figures. Used on the driver's one thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <curl/curl.h>

namespace velmaro::bench {

class RawClient {
 public:
  explicit RawClient(const std::vector<std::pair<std::string, std::string>>& headers);
  ~RawClient();
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  // One keep-alive GET of `url` on a handle kept across calls (the first
  // call's URL); true on a 200. With `body`, the answer is kept there (the
  // caller parses it); without, it is dropped.
  bool get(const std::string& url, std::string* body = nullptr);

  // One transfer of each of `urls` at once on one multi handle (handles and
  // connections kept across calls); true when all answered 200.
  bool burst(const std::vector<std::string>& urls);

 private:
  CURL* configure(CURL* easy, const std::string& url);
  CURL* keep(CURL* easy);

  curl_slist* headers_ = nullptr;
  CURL* single_ = nullptr;
  CURLM* multi_ = nullptr;
  std::vector<CURL*> pool_;
  std::vector<CURL*> easies_;
};

}  // namespace velmaro::bench
