// Queued blips when several real qvk processes share one data folder, and
// when one is killed while its batch is in flight.
#include <filesystem>
#include <memory>
#include <set>
#include <thread>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tools/qvk/qvk_emulator_test.h"

namespace qvk {
namespace {

using testing::QvkInvocation;

constexpr int kQueued = 10;

class QvkBlips : public testing::QvkEmulatorTest {
 protected:
  void SetUp() override {
    QvkEmulatorTest::SetUp();
    emulator_->control("DELETE", "blips");
    queueWhileTheServiceFails();
  }

  std::vector<std::string> args(const std::string& command) const {
    return withService({"hc", command});
  }

  // Ten searches, each one blip, while every blips request answers 503: they
  // stay queued in the data folder.
  void queueWhileTheServiceFails() {
    fault(R"({"count":1000,"status":503,"path_prefix":"/api/mobile/sdk/blips"})");
    std::string lines;
    for (int i = 0; i < kQueued; ++i) lines += "hc search pay" + std::to_string(i) + "\n";
    auto shell = qvk({"shell"}, lines);
    ASSERT_EQ(shell.status, 0) << shell.err;
    ASSERT_EQ(blips().at("blips").as_array().size(), 0u);
    emulator_->control("DELETE", "faults");
  }

  static boost::json::object blips() {
    return boost::json::parse(emulator_->get("blips").body).as_object();
  }

  // The blip ids the emulator accepted, each as often as it was accepted.
  static std::multiset<std::string> acceptedIds() {
    std::multiset<std::string> ids;
    const auto received = blips();  // kept: the loop reads into it
    for (const auto& blip : received.at("blips").as_array()) {
      const auto* id = blip.as_object().if_contains("blip_id");
      ids.emplace(id ? std::string(id->as_string()) : "");
    }
    return ids;
  }

  static void expectEachBlipOnce(std::int64_t repeated) {
    const auto ids = acceptedIds();
    EXPECT_EQ(ids.size(), static_cast<std::size_t>(kQueued));
    EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), ids.size());
    EXPECT_EQ(ids.count(""), 0u);
    EXPECT_EQ(blips().at("repeated").as_int64(), repeated);
  }
};

TEST_F(QvkBlips, EightProcessesAtOnceSendEachQueuedBlipOnce) {
  // Slow enough that every process reaches its exit flush while the first
  // batch is still in flight.
  fault(R"({"count":8,"delay_ms":1500,"path_prefix":"/api/mobile/sdk/blips"})");
  std::vector<std::unique_ptr<QvkInvocation>> runs;
  for (int i = 0; i < 8; ++i)
    runs.push_back(std::make_unique<QvkInvocation>(QVK_BINARY, args("categories")));
  for (auto& run : runs) {
    const auto result = run->finish();
    EXPECT_EQ(result.status, 0) << result.err;
  }
  expectEachBlipOnce(0);
}

TEST_F(QvkBlips, ABatchWhoseSenderWasKilledIsSentByTheNextRun) {
  fault(R"({"count":1,"delay_ms":1500,"path_prefix":"/api/mobile/sdk/blips"})");
  QvkInvocation killed(QVK_BINARY, args("categories"));
  // The fault is used up when the batch's request has arrived.
  waitUntilFaultsAreUsed();
  ASSERT_TRUE(killed.signal(SIGKILL));
  killed.finish(std::chrono::seconds(10));
  // The service still accepts the batch: only its answer is lost.
  for (int poll = 0; poll < 200 && acceptedIds().size() < static_cast<std::size_t>(kQueued); ++poll)
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  ASSERT_EQ(acceptedIds().size(), static_cast<std::size_t>(kQueued));

  const auto next = QvkInvocation::run(QVK_BINARY, args("categories"));
  EXPECT_EQ(next.status, 0) << next.err;
  expectEachBlipOnce(kQueued);
}

}  // namespace
}  // namespace qvk
