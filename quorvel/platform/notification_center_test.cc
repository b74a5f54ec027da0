#include "quorvel/platform/notification_center.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

struct DeliveryCase {
  const char* label;
  std::optional<std::string> observedName;
  bool observeSender;  // observe only notifications from `sender`
  std::string postedName;
  bool postFromSender;
  bool delivered;
};

void PrintTo(const DeliveryCase& c, std::ostream* os) {
  *os << c.label;
}

class NotificationDeliveryTest : public testing::TestWithParam<DeliveryCase> {};

TEST_P(NotificationDeliveryTest, MatchesByNameAndOptionalSenderAndCarriesBoth) {
  const auto& c = GetParam();
  NotificationCenter center;
  int sender = 0;
  int other = 0;
  const void* postedBy = c.postFromSender ? &sender : &other;
  int calls = 0;
  center.addObserver(c.observedName, c.observeSender ? &sender : nullptr,
                     [&](const Notification& n) {
                       ++calls;
                       EXPECT_EQ(n.sender, postedBy);
                       EXPECT_EQ(std::any_cast<std::string>(n.userInfo.at("error")), "boom");
                     });
  center.post(c.postedName, postedBy, {{"error", std::string("boom")}});
  EXPECT_EQ(calls, c.delivered ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, NotificationDeliveryTest,
    testing::Values(DeliveryCase{"SameName", "A", false, "A", false, true},
                    DeliveryCase{"OtherName", "A", false, "B", false, false},
                    DeliveryCase{"AnyName", std::nullopt, false, "B", false, true},
                    DeliveryCase{"RightSender", "A", true, "A", true, true},
                    DeliveryCase{"WrongSender", "A", true, "A", false, false},
                    DeliveryCase{"AnyNameRightSender", std::nullopt, true, "Z", true, true}),
    testing::PrintToStringParamName());

TEST(NotificationCenterTest, RemovedObserversAreNotCalledAgain) {
  NotificationCenter center;
  int calls = 0;
  auto token = center.addObserver("A", nullptr, [&](const Notification&) { ++calls; });
  {
    auto registration = center.observe("A", nullptr, [&](const Notification&) { ++calls; });
    center.post("A");
    EXPECT_EQ(calls, 2);
  }  // registration removes its observer
  center.removeObserver(token);
  center.post("A");
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(center.observerCount(), 0U);
}

TEST(NotificationCenterTest, AnObserverMayRemoveItselfAndOthersWhilePosting) {
  NotificationCenter center;
  std::vector<std::string> calls;
  NotificationCenter::Token second = 0;
  NotificationCenter::Token first = center.addObserver("A", nullptr, [&](const Notification&) {
    calls.emplace_back("first");
    center.removeObserver(first);
    center.removeObserver(second);
  });
  second =
      center.addObserver("A", nullptr, [&](const Notification&) { calls.emplace_back("second"); });
  center.post("A");
  center.post("A");
  EXPECT_EQ(calls, std::vector<std::string>{"first"});
}

TEST(NotificationCenterTest, PostingAndRemovingFromManyThreadsIsSafe) {
  NotificationCenter center;
  std::atomic<int> calls{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 200; ++i) {
        auto token = center.addObserver("A", nullptr, [&](const Notification&) { ++calls; });
        center.post("A");
        center.removeObserver(token);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_GE(calls.load(), 800);  // each post sees at least its own observer
  EXPECT_EQ(center.observerCount(), 0U);
}

}  // namespace
}  // namespace quorvel::platform
