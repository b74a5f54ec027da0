#pragma once

#include <any>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "emulator/demo_identity.h"
#include "quorvel/jwt_identity.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "tests/emulator_process.h"
#include "tests/request_recorder.h"
#include "velmaro/core/provider_request.h"
#include "velmaro/core/qvk_api_dispatcher.h"
#include "velmaro/core/support.h"

namespace velmaro::testing {

// Everything a callback was answered with, in order.
template <class Result>
struct Answers {
  struct Answer {
    std::optional<Result> result;
    std::optional<quorvel::platform::Error> error;
  };
  std::vector<Answer> list;

  std::size_t size() const { return list.size(); }
  const Answer& operator[](std::size_t i) const { return list.at(i); }
};

// Providers against one emulator per test suite, behind a recording relay.
// Each test gets its own core object (JWT demo user), data directory (so no
// HTTP cache or settings leak between tests), run loop as main queue and
// notification log. A suite derives from it, names the prefix of the
// notifications it records and makes its providers in startProviders().
class ProviderFixture : public ::testing::Test {
 protected:
  using Error = quorvel::platform::Error;
  using Notification = quorvel::platform::Notification;

  explicit ProviderFixture(std::string notificationPrefix)
      : notificationPrefix_(std::move(notificationPrefix)) {}

  static void SetUpTestSuite() {
    emulator_ = std::make_unique<EmulatorProcess>(QVK_EMULATOR_PATH);
    if (emulator_->running()) recorder_ = std::make_unique<RequestRecorder>(emulator_->url());
  }
  static void TearDownTestSuite() {
    recorder_.reset();
    emulator_.reset();
  }

  // Where the core object sends its requests: the relay by default.
  virtual std::string serviceUrl() const { return recorder_->url(); }
  // Process-wide state of the suite's own, cleared before each test.
  virtual void resetState() {}
  virtual void startProviders() = 0;
  virtual void stopProviders() = 0;

  void SetUp() override {
    ASSERT_TRUE(emulator_->running()) << emulator_->error();
    ASSERT_FALSE(recorder_->url().empty());
    std::random_device random;
    dataDirectory_ = std::filesystem::temp_directory_path() /
                     ("velmaro-integration-" + std::to_string(random()) + std::to_string(random()));
    std::filesystem::create_directories(dataDirectory_);
    loop_ = std::make_shared<quorvel::platform::RunLoop>();
    emulator_->control("DELETE", "faults");
    emulator_->control("DELETE", "blips");
    emulator_->control("PUT", "settings", R"({"voting":true})");
    resetState();
    startCore();
    recorder_->clear();
    registration_ = quorvel::platform::NotificationCenter::defaultCenter().observe(
        std::nullopt, nullptr, [this](const Notification& n) {
          if (n.name.rfind(notificationPrefix_, 0) == 0) notifications_.push_back(n);
        });
  }

  void TearDown() override {
    registration_.reset();
    stopCore();
    std::error_code ec;
    std::filesystem::remove_all(dataDirectory_, ec);
  }

  void startCore() {
    quorvel::QuorvelOptions options;
    options.mainQueue = loop_;
    options.dataDirectory = dataDirectory_;
    options.logLevel = std::getenv("QUORVEL_TEST_LOG") != nullptr ? quorvel::LogLevel::verbose
                                                                  : quorvel::LogLevel::off;
    options.connectTimeout = std::chrono::milliseconds(2000);
    options.requestTimeout = requestTimeout_;
    options.maxResponseBytes = maxResponseBytes_;
    options.blipDelay = std::chrono::milliseconds(20);
    core_ = quorvel::Quorvel::initialize("provider-integration", serviceUrl(), "client-1", options);
    core_->setIdentity(
        std::make_shared<quorvel::JwtIdentity>(std::string(qvk::emulator::kDemoJwt)));
    Support::initialize(core_);
    startProviders();
  }

  void stopCore() {
    stopProviders();
    if (core_) core_->shutdown();
    loop_->runPending();
    core_.reset();
    Support::resetForTesting();
    QVKAPIDispatcher::resetForTesting();
    quorvel::Quorvel::resetForTesting();
  }

  // Pumps the main queue until `done` holds (bounded).
  bool pumpUntil(const std::function<bool()>& done,
                 std::chrono::milliseconds timeout = std::chrono::seconds(8)) {
    return loop_->runUntil(done, timeout);
  }
  // Lets already queued work run, for checks that something did NOT happen.
  void settle(std::chrono::milliseconds time = std::chrono::milliseconds(150)) {
    loop_->runUntil([] { return false; }, time);
  }

  template <class Result>
  static ProviderCallback<Result> collect(std::shared_ptr<Answers<Result>> into) {
    return [into](std::optional<Result> result, std::optional<Error> error) {
      into->list.push_back({std::move(result), std::move(error)});
    };
  }

  // Runs `start` with a collecting callback and waits for `count` answers.
  template <class Result, class Start>
  std::shared_ptr<Answers<Result>> call(Start start, std::size_t count = 1) {
    auto answers = std::make_shared<Answers<Result>>();
    start(collect<Result>(answers));
    EXPECT_TRUE(pumpUntil([&] { return answers->size() >= count; })) << "no answer";
    return answers;
  }

  // The recorded notifications' names; every one must come from `sender`.
  std::vector<std::string> notificationNames(const void* sender) const {
    std::vector<std::string> names;
    for (const auto& n : notifications_) {
      EXPECT_EQ(n.sender, sender) << n.name;
      names.push_back(n.name);
    }
    return names;
  }

  // The error in a notification's user info.
  static std::optional<Error> errorOf(const Notification& n) {
    auto it = n.userInfo.find("error");
    if (it == n.userInfo.end()) return std::nullopt;
    return std::any_cast<Error>(it->second);
  }

  // A control answer's JSON.
  static boost::json::value controlJson(const std::string& path) {
    return boost::json::parse(emulator_->get(path).body);
  }

  // The target of the last request whose target contains `fragment`.
  static std::string lastTarget(const std::string& fragment) {
    auto seen = recorder_->matching(fragment);
    return seen.empty() ? std::string() : seen.back().target;
  }

  static inline std::unique_ptr<EmulatorProcess> emulator_;
  static inline std::unique_ptr<RequestRecorder> recorder_;

  // Core limits; a suite that provokes time-outs or large answers shortens them.
  std::chrono::milliseconds requestTimeout_{3000};
  std::size_t maxResponseBytes_ = 32u * 1024u * 1024u;
  std::string notificationPrefix_;
  std::filesystem::path dataDirectory_;
  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<quorvel::Quorvel> core_;
  quorvel::platform::NotificationCenter::Registration registration_;
  std::vector<Notification> notifications_;
};

}  // namespace velmaro::testing
