// TransportPoller with real descriptors: registrations that outlive the
// descriptor numbers they were made for, and the host's set.
#include "quorvel/transport_poller.h"

#include <array>
#include <chrono>

#include <curl/curl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvel {
namespace {

using namespace std::chrono_literals;

// A connected pair of sockets; `ours` is the end the poller watches.
struct Pair {
  Pair() {
    int fds[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, fds), 0);
    ours = fds[0];
    peer = fds[1];
  }
  ~Pair() { closeBoth(); }
  void closeBoth() {
    if (ours >= 0) ::close(ours);
    if (peer >= 0) ::close(peer);
    ours = peer = -1;
  }
  void send() const { EXPECT_EQ(::write(peer, "x", 1), 1); }
  int ours = -1;
  int peer = -1;
};

// A connection's socket as the transport registers it: opened by it, then
// watched for input.
void watchConnection(TransportPoller& poller, const Pair& connection, bool forHost) {
  poller.socketOpened(connection.ours);
  poller.watch(connection.ours, CURL_POLL_IN, forHost);
}

// The sockets the transport's thread would hand to libcurl after waiting up
// to `timeout`.
std::vector<int> readyForWorker(TransportPoller& poller, std::chrono::milliseconds timeout) {
  std::array<epoll_event, 8> events{};
  const int count = poller.wait(events, timeout);
  std::vector<int> sockets;
  if (count <= 0) return sockets;
  for (const auto& s : poller.sort({events.data(), static_cast<std::size_t>(count)}).sockets) {
    sockets.push_back(s.socket);
  }
  return sockets;
}

TEST(TransportPollerTest, ANumberThatComesBackAsANewSocketIsRegisteredAnew) {
  TransportPoller poller;
  ASSERT_TRUE(poller.ready());
  int reused = -1;
  {
    // A descriptor of libcurl's own (a name lookup's, say): watched, let go
    // of and closed without the poller being told.
    Pair lookup;
    poller.watch(lookup.ours, CURL_POLL_IN, false);
    poller.watch(lookup.ours, CURL_POLL_REMOVE, false);
    reused = lookup.ours;
  }
  Pair connection;
  ASSERT_EQ(connection.ours, reused) << "the system hands out the lowest free number";
  watchConnection(poller, connection, false);
  connection.send();
  EXPECT_EQ(readyForWorker(poller, 2s), std::vector<int>{connection.ours});
}

TEST(TransportPollerTest, AnIdleConnectionTheServerClosedLeavesTheSetAfterOneEvent) {
  TransportPoller poller;
  Pair connection;
  watchConnection(poller, connection, false);
  poller.watch(connection.ours, CURL_POLL_REMOVE, false);  // kept registered, unwatched
  ::close(connection.peer);
  connection.peer = -1;
  EXPECT_TRUE(readyForWorker(poller, 2s).empty()) << "libcurl is not watching it";
  EXPECT_TRUE(readyForWorker(poller, 0ms).empty());
  std::array<epoll_event, 8> events{};
  EXPECT_EQ(poller.wait(events, 0ms), 0) << "still registered: the thread would spin";

  // Watched again (the next transfer on it): registered again.
  poller.watch(connection.ours, CURL_POLL_IN, false);
  EXPECT_EQ(readyForWorker(poller, 2s), std::vector<int>{connection.ours});
}

TEST(TransportPollerTest, TheHostsSocketsReachTheThreadOnlyWhileLent) {
  TransportPoller poller;
  Pair connection;
  watchConnection(poller, connection, true);
  std::vector<pollfd> watched;
  poller.hostDescriptors(watched);
  ASSERT_EQ(watched.size(), 1U);
  EXPECT_EQ(watched[0].fd, connection.ours);
  EXPECT_TRUE(poller.hostSetBusy());

  connection.send();
  EXPECT_TRUE(readyForWorker(poller, 50ms).empty()) << "the host's, not the thread's";
  poller.lendHostSet();
  watched.clear();
  poller.hostDescriptors(watched);
  EXPECT_TRUE(watched.empty()) << "a lent set is not polled by the host";
  EXPECT_EQ(readyForWorker(poller, 2s), std::vector<int>{connection.ours});
  poller.reclaimHostSet();
  EXPECT_TRUE(readyForWorker(poller, 50ms).empty());

  watched.clear();
  poller.hostDescriptors(watched);
  ASSERT_EQ(watched.size(), 1U);
  watched[0].revents = POLLIN;
  const auto sorted = poller.sortHost(watched);
  ASSERT_EQ(sorted.sockets.size(), 1U);
  EXPECT_EQ(sorted.sockets[0].curlEvents, CURL_CSELECT_IN);
}

TEST(TransportPollerTest, ATimerDueNowWakesTheThread) {
  TransportPoller poller;
  poller.setTimeout(0);
  std::array<epoll_event, 8> events{};
  const int count = poller.wait(events, 2s);
  ASSERT_EQ(count, 1);
  EXPECT_TRUE(poller.sort({events.data(), 1}).timerDue);
}

// A deadline that no longer holds (a grace the loop made moot) must not
// wake the thread: taken back, or moved later than it stood.
class TransportPollerResetTest : public ::testing::TestWithParam<long> {};

TEST_P(TransportPollerResetTest, AnEarlierDeadlineNoLongerFires) {
  TransportPoller poller;
  poller.setTimeout(20);
  poller.resetTimeout(GetParam());
  std::array<epoll_event, 8> events{};
  EXPECT_EQ(poller.wait(events, 150ms), 0);
}

INSTANTIATE_TEST_SUITE_P(NoTimeoutOrALaterOne, TransportPollerResetTest,
                         ::testing::Values(-1L, 60'000L));

}  // namespace
}  // namespace quorvel
