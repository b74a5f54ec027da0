#include "tests/request_recorder.h"

#include <chrono>

#include <httplib.h>
#include <strings.h>

namespace velmaro::testing {

namespace {

// Headers that belong to one hop and are set again by the next one.
bool hopByHop(const std::string& name) {
  static const char* const kNames[] = {"Host", "Content-Length", "Transfer-Encoding", "Connection",
                                       "Keep-Alive"};
  for (const char* n : kNames) {
    if (::strcasecmp(name.c_str(), n) == 0) return true;
  }
  return false;
}

httplib::Headers forwardable(const httplib::Headers& headers) {
  httplib::Headers out;
  for (const auto& [name, value] : headers) {
    if (!hopByHop(name) && name != "REMOTE_ADDR" && name != "REMOTE_PORT" && name != "LOCAL_ADDR" &&
        name != "LOCAL_PORT") {
      out.emplace(name, value);
    }
  }
  return out;
}

}  // namespace

RequestRecorder::RequestRecorder(std::string upstreamUrl)
    : upstream_(std::move(upstreamUrl)), server_(std::make_unique<httplib::Server>()) {
  auto relay = [this](const httplib::Request& req, httplib::Response& res) {
    {
      std::lock_guard lock(mutex_);
      seen_.push_back(Seen{req.method, req.target, req.body, {}});
      for (const auto& [name, value] : req.headers) seen_.back().headers.emplace_back(name, value);
    }
    httplib::Client client(upstream_);
    client.set_url_encode(false);  // forward the target exactly as it came
    client.set_read_timeout(std::chrono::seconds(10));
    httplib::Request forward;
    forward.method = req.method;
    forward.path = req.target;
    forward.headers = forwardable(req.headers);
    forward.body = req.body;
    auto result = client.send(forward);
    if (!result) {
      res.status = 502;
      return;
    }
    res.status = result->status;
    for (const auto& [name, value] : result->headers) {
      if (!hopByHop(name)) res.headers.emplace(name, value);
    }
    res.body = result->body;
  };
  const char* any = R"(/.*)";
  server_->Get(any, relay);
  server_->Post(any, relay);
  server_->Put(any, relay);
  server_->Delete(any, relay);
  const int port = server_->bind_to_any_port("127.0.0.1");
  if (port <= 0) return;
  url_ = "http://127.0.0.1:" + std::to_string(port);
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  // Bounded wait for the accept loop, so that stop() cannot be lost.
  for (int i = 0; i < 2000 && !server_->is_running(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

RequestRecorder::~RequestRecorder() {
  server_->stop();
  if (thread_.joinable()) thread_.join();
}

std::vector<RequestRecorder::Seen> RequestRecorder::seen() const {
  std::lock_guard lock(mutex_);
  return seen_;
}

std::vector<RequestRecorder::Seen> RequestRecorder::matching(const std::string& fragment) const {
  std::vector<Seen> out;
  for (auto& s : seen()) {
    if (s.target.find(fragment) != std::string::npos) out.push_back(std::move(s));
  }
  return out;
}

void RequestRecorder::clear() {
  std::lock_guard lock(mutex_);
  seen_.clear();
}

}  // namespace velmaro::testing
