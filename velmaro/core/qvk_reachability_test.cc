// Reachability: the two classification rules and the flag line, and the
// notifier against a real kernel in a network namespace of the test's own.
#include "velmaro/core/qvk_reachability.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>

#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/reachability_flags.h"
#include "quorvel/platform/run_loop.h"

namespace velmaro {
namespace {

namespace F = quorvel::platform::ReachabilityFlags;

struct RuleCase {
  const char* label;
  std::uint32_t flags;
  NetworkStatus network;
  NetworkStatus localWiFi;
};

class ReachabilityRulesTest : public ::testing::TestWithParam<RuleCase> {};

TEST_P(ReachabilityRulesTest, NetworkRule) {
  EXPECT_EQ(QVKReachability::networkStatusForFlags(GetParam().flags), GetParam().network);
}

TEST_P(ReachabilityRulesTest, LocalWiFiRule) {
  EXPECT_EQ(QVKReachability::localWiFiStatusForFlags(GetParam().flags), GetParam().localWiFi);
}

INSTANTIATE_TEST_SUITE_P(
    Flags, ReachabilityRulesTest,
    ::testing::Values(
        RuleCase{"nothing", 0, NotReachable, NotReachable},
        RuleCase{"wwanWithoutReachable", F::IsWWAN | F::IsDirect, NotReachable, NotReachable},
        RuleCase{"reachable", F::Reachable, ReachableViaWiFi, NotReachable},
        RuleCase{"reachableDirect", F::Reachable | F::IsDirect, ReachableViaWiFi, ReachableViaWiFi},
        RuleCase{"wwanBeforeConnectionRequired", F::Reachable | F::IsWWAN | F::ConnectionRequired,
                 ReachableViaWWAN, NotReachable},
        RuleCase{"connectionRequired", F::Reachable | F::ConnectionRequired, NotReachable,
                 NotReachable},
        RuleCase{"requiredOnDemand", F::Reachable | F::ConnectionRequired | F::ConnectionOnDemand,
                 ReachableViaWiFi, NotReachable},
        RuleCase{"requiredOnTraffic",
                 F::Reachable | F::ConnectionRequired | F::ConnectionOnTraffic | F::IsDirect,
                 ReachableViaWiFi, ReachableViaWiFi},
        RuleCase{
            "onTrafficButIntervention",
            F::Reachable | F::ConnectionRequired | F::ConnectionOnTraffic | F::InterventionRequired,
            NotReachable, NotReachable},
        RuleCase{"onDemandWithoutRequiredIsPlainReachable",
                 F::Reachable | F::ConnectionOnDemand | F::InterventionRequired, ReachableViaWiFi,
                 NotReachable}),
    [](const auto& param) { return std::string(param.param.label); });

struct LineCase {
  const char* label;
  std::uint32_t flags;
  const char* rule;
  const char* expected;
};

class FlagStatusLineTest : public ::testing::TestWithParam<LineCase> {};

TEST_P(FlagStatusLineTest, Text) {
  EXPECT_EQ(QVKReachability::flagStatusLine(GetParam().flags, GetParam().rule),
            GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, FlagStatusLineTest,
    ::testing::Values(LineCase{"none", 0, "networkStatusForFlags",
                               "Reachability Flag Status: -- ------- networkStatusForFlags\n"},
                      LineCase{"all", 0x7003F, "localWiFiStatusForFlags",
                               "Reachability Flag Status: WR tcCiDld localWiFiStatusForFlags\n"},
                      LineCase{"eachInItsPlace", F::IsWWAN | F::ConnectionRequired | F::IsDirect,
                               "networkStatusForFlags",
                               "Reachability Flag Status: W- -c----d networkStatusForFlags\n"}),
    [](const auto& param) { return std::string(param.param.label); });

// --- the notifier against the kernel ---------------------------------------

std::size_t openDescriptors() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++count;
  }
  return count;
}

struct Step {
  const char* label;
  const char* command;
  NetworkStatus internet;
  NetworkStatus localWiFi;
};

// Each step changes the namespace's network with `ip` and must be seen,
// notification and status, within the bound.
const Step kSteps[] = {
    {"vethWithDefaultRoute",
     "ip link add qv0 type veth peer name qv1 && ip addr add 10.77.0.1/24 dev qv0 && "
     "ip link set qv1 up && ip link set qv0 up && ip route add default via 10.77.0.2 dev qv0",
     ReachableViaWiFi, NotReachable},
    {"linkLocalRoute", "ip route add 169.254.0.0/16 dev qv0", ReachableViaWiFi, ReachableViaWiFi},
    {"peerDownLeavesNoCarrier", "ip link set qv1 down", NotReachable, NotReachable},
    {"peerUpAgain", "ip link set qv1 up", ReachableViaWiFi, ReachableViaWiFi},
    {"defaultRouteRemoved", "ip route del default", NotReachable, ReachableViaWiFi},
};

void runSteps() {
  quorvel::platform::RunLoop loop;
  auto internet = QVKReachability::reachabilityForInternetConnection();
  auto local = QVKReachability::reachabilityForLocalWiFi();
  ASSERT_TRUE(internet && local);
  EXPECT_EQ(internet->currentReachabilityStatus(), NotReachable) << "a fresh namespace";
  ASSERT_TRUE(internet->startNotifier());
  ASSERT_TRUE(local->startNotifier());
  std::atomic<int> notified{0};
  auto registration = quorvel::platform::NotificationCenter::defaultCenter().observe(
      QVKAPI_ReachabilityChangedNotification, nullptr,
      [&](const quorvel::platform::Notification& n) {
        EXPECT_TRUE(n.sender == internet.get() || n.sender == local.get());
        ++notified;
      });
  for (const auto& step : kSteps) {
    notified = 0;
    ASSERT_EQ(std::system((std::string(step.command) + " >/dev/null 2>&1").c_str()), 0)
        << step.label;
    const bool seen = loop.runUntil(
        [&] {
          return notified > 0 && internet->currentReachabilityStatus() == step.internet &&
                 local->currentReachabilityStatus() == step.localWiFi;
        },
        std::chrono::seconds(3));
    EXPECT_TRUE(seen) << step.label << ": notifications " << notified.load() << ", internet "
                      << internet->currentReachabilityStatus() << ", local Wi-Fi "
                      << local->currentReachabilityStatus();
  }
  EXPECT_FALSE(internet->connectionRequired());
  internet->stopNotifier();
  local->stopNotifier();
  notified = 0;
  ASSERT_EQ(std::system("ip link set qv1 down"), 0);
  loop.runFor(std::chrono::milliseconds(200));
  EXPECT_EQ(notified, 0) << "stopped notifiers stay silent";
}

TEST(ReachabilityNotifierTest, FollowsLinkAndRouteChangesInOwnNamespace) {
  if (std::system("command -v ip >/dev/null 2>&1") != 0) GTEST_SKIP() << "iproute2 (ip) missing";
  std::string skipped;
  std::size_t before = 0;
  std::size_t after = 0;
  // unshare(CLONE_NEWNET) moves only the calling thread, so the test body
  // runs on a thread of its own; the `ip` commands it starts inherit it.
  std::thread body([&] {
    if (::unshare(CLONE_NEWNET) != 0) {
      skipped = std::string("cannot make a network namespace: ") + std::strerror(errno);
      return;
    }
    before = openDescriptors();
    runSteps();
    after = openDescriptors();
  });
  body.join();
  if (!skipped.empty()) GTEST_SKIP() << skipped;
  EXPECT_EQ(after, before) << "descriptors left behind";
}

}  // namespace
}  // namespace velmaro
