#pragma once

// Shared by the core library's tests: a real HTTP server on loopback, a
// fresh data directory and a pumped RunLoop per test.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <httplib.h>

#include "quorvel/basic_client_headers.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/provider_service.h"
#include "quorvel/quorvel.h"

namespace quorvel::testing {

// What the server saw of one request.
struct SeenRequest {
  std::string method;
  std::string path;
  httplib::Headers headers;
  std::string body;

  std::string header(const std::string& name) const {
    const auto it = headers.find(name);
    return it == headers.end() ? std::string() : it->second;
  }
};

class LoopbackServer {
 public:
  LoopbackServer() {
    // Handler threads otherwise wait five seconds on an idle kept-alive
    // connection before the server can stop.
    server_.set_keep_alive_timeout(1);
    // Answers leave in more than one write; without this, Nagle and delayed
    // acknowledgements add tens of milliseconds to every call.
    server_.set_tcp_nodelay(true);
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    for (int i = 0; i < 200 && !server_.is_running(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  ~LoopbackServer() {
    server_.stop();
    if (thread_.joinable()) thread_.join();
  }

  // Routes that record what they receive before `handler` answers.
  void Get(const std::string& path, httplib::Server::Handler handler) {
    server_.Get(path, recording(std::move(handler)));
  }
  void Post(const std::string& path, httplib::Server::Handler handler) {
    server_.Post(path, recording(std::move(handler)));
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

  std::vector<SeenRequest> seen() {
    std::lock_guard lock(mutex_);
    return seen_;
  }
  std::vector<SeenRequest> seen(const std::string& path) {
    std::lock_guard lock(mutex_);
    std::vector<SeenRequest> matching;
    for (const auto& r : seen_) {
      if (r.path == path) matching.push_back(r);
    }
    return matching;
  }
  std::size_t count(const std::string& path) { return seen(path).size(); }

 private:
  httplib::Server::Handler recording(httplib::Server::Handler handler) {
    return
        [this, handler = std::move(handler)](const httplib::Request& req, httplib::Response& res) {
          {
            std::lock_guard lock(mutex_);
            seen_.push_back(SeenRequest{req.method, req.path, req.headers, req.body});
          }
          handler(req, res);
        };
  }

  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
  std::mutex mutex_;
  std::vector<SeenRequest> seen_;
};

// The outcome of one ProviderService::perform.
struct Answer {
  int calls = 0;
  std::optional<std::string> data;
  std::optional<HTTPURLResponse> response;
  std::optional<platform::Error> error;

  long status() const { return response ? response->statusCode() : 0; }
};

class CoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::random_device random;
    dataDirectory_ = std::filesystem::temp_directory_path() /
                     ("quorvel-core-test-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(dataDirectory_);
    loop_ = std::make_shared<platform::RunLoop>();
  }

  void TearDown() override {
    if (quorvel_) quorvel_->shutdown();
    loop_->runPending();
    quorvel_.reset();
    Quorvel::resetForTesting();
    CoreLogger::resetForTesting();
    std::error_code ec;
    std::filesystem::remove_all(dataDirectory_, ec);
  }

  virtual QuorvelOptions options() {
    QuorvelOptions options;
    options.mainQueue = loop_;
    options.dataDirectory = dataDirectory_;
    // Not the program's own user defaults under the home folder.
    if (!userDefaults_) {
      userDefaults_ = std::make_shared<platform::UserDefaults>(dataDirectory_ / "defaults.sqlite");
    }
    options.userDefaults = userDefaults_;
    // QUORVEL_TEST_LOG=1 shows the core's log while debugging a test.
    options.logLevel =
        std::getenv("QUORVEL_TEST_LOG") != nullptr ? LogLevel::verbose : LogLevel::off;
    options.connectTimeout = std::chrono::milliseconds(2000);
    options.requestTimeout = std::chrono::milliseconds(3000);
    options.blipDelay = std::chrono::milliseconds(20);
    return options;
  }

  std::shared_ptr<Quorvel> start(const std::string& url, const std::string& appId = "test-app") {
    if (quorvel_) quorvel_->shutdown();
    loop_->runPending();
    quorvel_ = Quorvel::initialize(appId, url, "client-7", options());
    return quorvel_;
  }

  // Runs the loop until `done` or five seconds have passed. `done` is also
  // checked every few milliseconds, for conditions that no task changes
  // (what the server has seen).
  bool waitFor(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::chrono::steady_clock::now() < deadline) {
      if (loop_->runUntil(done, std::chrono::milliseconds(5))) return true;
    }
    return done();
  }

  ProviderService service(const std::string& url, bool requiresAuth = false,
                          HttpMethod method = HttpMethod::get,
                          std::optional<std::string> body = std::nullopt,
                          std::map<std::string, std::string> additional = {},
                          std::shared_ptr<CachedHTTPURLResponseDelegate> delegate = nullptr) {
    return ProviderService(quorvel_->accountDetails(), url, requiresAuth, method,
                           std::make_shared<BasicClientHeaders>("Support", "2.3.4", additional),
                           std::move(body), loop_, Reporter::none, std::move(delegate));
  }

  // Performs; the answer is filled when the callback comes.
  static std::shared_ptr<Answer> perform(const ProviderService& request) {
    auto answer = std::make_shared<Answer>();
    request.perform([answer](std::optional<std::string> data,
                             std::optional<HTTPURLResponse> response,
                             std::optional<platform::Error> error) {
      ++answer->calls;
      answer->data = std::move(data);
      answer->response = std::move(response);
      answer->error = std::move(error);
    });
    return answer;
  }

  // Waits for every answer (and a little longer, to catch a second callback).
  bool waitForAll(const std::vector<std::shared_ptr<Answer>>& answers) {
    const bool all = waitFor([&] {
      return std::all_of(answers.begin(), answers.end(), [](const auto& a) { return a->calls; });
    });
    loop_->runFor(std::chrono::milliseconds(5));
    return all;
  }

  // Performs and waits for the answer.
  Answer call(const ProviderService& request) {
    const auto answer = perform(request);
    waitForAll({answer});
    return *answer;
  }

  std::filesystem::path dataDirectory_;
  std::shared_ptr<platform::UserDefaults> userDefaults_;
  std::shared_ptr<platform::RunLoop> loop_;
  std::shared_ptr<Quorvel> quorvel_;
};

}  // namespace quorvel::testing
