#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/emulator_process.h"
#include "tools/qvk/qvk_invocation.h"

namespace qvk::testing {

// What the qvk process tests stand on: one qvk-emulator per suite, a fresh
// folder per test (`dataDir_`, the runs' --data-dir unless a suite says
// otherwise), no fault left over from the test before.
class QvkEmulatorTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    emulator_ = std::make_unique<velmaro::testing::EmulatorProcess>(QVK_EMULATOR_BINARY);
  }
  static void TearDownTestSuite() { emulator_.reset(); }

  void SetUp() override {
    ASSERT_TRUE(emulator_->running()) << emulator_->error();
    std::string pattern = "/tmp/qvk-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dataDir_ = pattern;
    emulator_->control("DELETE", "faults");
  }
  void TearDown() override {
    emulator_->control("DELETE", "faults");
    std::filesystem::remove_all(dataDir_);
  }

  // --url URL --data-dir <the test's folder> args...; the emulator's URL by default.
  std::vector<std::string> withService(const std::vector<std::string>& args,
                                       std::string url = "") const {
    std::vector<std::string> all{"--url", url.empty() ? emulator_->url() : url, "--data-dir",
                                 dataDir_};
    all.insert(all.end(), args.begin(), args.end());
    return all;
  }
  InvocationResult qvk(const std::vector<std::string>& args, const std::string& input = "") const {
    return QvkInvocation::run(QVK_BINARY, withService(args), input);
  }

  static void fault(const std::string& json) {
    ASSERT_EQ(emulator_->control("POST", "faults", json).status, 201);
  }

  // Waits (up to 10 s) until every queued fault is used up: the requests
  // they were meant for have arrived.
  static void waitUntilFaultsAreUsed() {
    const auto faultsLeft = [] {
      return boost::json::parse(emulator_->get("faults").body).at("faults").as_array().size();
    };
    for (int poll = 0; poll < 400 && faultsLeft() > 0; ++poll)
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }

  static inline std::unique_ptr<velmaro::testing::EmulatorProcess> emulator_;
  std::string dataDir_;
};

}  // namespace qvk::testing
