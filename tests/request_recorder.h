#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace httplib {
class Server;
}

namespace velmaro::testing {

// A loopback relay in front of the emulator that keeps every request line as
// it arrived (method, raw target with its query, body) and forwards the
// request unchanged. Tests read it to check the wire form of what the library
// sent, which the emulator's own controls do not expose.
class RequestRecorder {
 public:
  struct Seen {
    std::string method;
    std::string target;  // path and query exactly as sent
    std::string body;
    // Header fields as they arrived, names as sent.
    std::vector<std::pair<std::string, std::string>> headers;
  };

  explicit RequestRecorder(std::string upstreamUrl);
  ~RequestRecorder();
  RequestRecorder(const RequestRecorder&) = delete;
  RequestRecorder& operator=(const RequestRecorder&) = delete;

  // "http://127.0.0.1:<port>", or empty when it could not listen.
  const std::string& url() const { return url_; }

  std::vector<Seen> seen() const;
  // The requests whose target contains `fragment`.
  std::vector<Seen> matching(const std::string& fragment) const;
  void clear();

 private:
  std::string upstream_;
  std::string url_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  mutable std::mutex mutex_;
  std::vector<Seen> seen_;
};

}  // namespace velmaro::testing
