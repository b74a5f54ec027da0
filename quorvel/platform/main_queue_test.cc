// Run loop and serial thread queue: ordering, threads, lifetimes.
#include <atomic>
#include <chrono>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quorvel/platform/run_loop.h"
#include "quorvel/platform/serial_thread_queue.h"

namespace quorvel::platform {
namespace {

using namespace std::chrono_literals;

TEST(RunLoopTest, RunsTasksInPostingOrderIncludingOnesPostedWhileRunning) {
  RunLoop loop;
  std::vector<int> order;
  loop.post([&] {
    order.push_back(1);
    loop.post([&] { order.push_back(3); });
  });
  loop.post([&] { order.push_back(2); });
  EXPECT_TRUE(loop.runUntil([&] { return order.size() == 3; }, 2s));
  EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

// Waking, stopping and deadlines, with and without sources: RunLoopWaitTest.

TEST(RunLoopTest, IsCurrentOnlyWhilePumpingOnThatThread) {
  RunLoop loop;
  bool insideTask = false;
  bool fromOtherThread = true;
  loop.post([&] {
    insideTask = loop.isCurrent();
    std::thread([&] { fromOtherThread = loop.isCurrent(); }).join();
  });
  loop.runPending();
  EXPECT_TRUE(insideTask);
  EXPECT_FALSE(fromOtherThread);
}

TEST(RunLoopTest, CurrentIsThePumpedLoopElseTheLastOneMadeOnThisThread) {
  RunLoop first;
  auto second = std::make_unique<RunLoop>();
  EXPECT_EQ(RunLoop::current(), second.get());
  RunLoop* whilePumpingFirst = nullptr;
  RunLoop* onAnotherThread = &first;
  first.post([&] {
    whilePumpingFirst = RunLoop::current();
    std::thread([&] { onAnotherThread = RunLoop::current(); }).join();
  });
  first.runPending();
  EXPECT_EQ(whilePumpingFirst, &first);
  EXPECT_EQ(onAnotherThread, nullptr);
  RunLoop* gone = second.get();
  second.reset();
  EXPECT_EQ(RunLoop::current(), &first);
  RunLoop::removeSourceIfAlive(gone, nullptr);  // a dead loop is not touched (ASan would see it)
}

TEST(RunLoopTest, DestroyingDropsQueuedTasksWithoutRunningThem) {
  auto flag = std::make_shared<int>(0);
  {
    RunLoop loop;
    loop.post([flag] { *flag = 1; });
    EXPECT_EQ(loop.pendingCount(), 1U);
  }
  EXPECT_EQ(*flag, 0);
  EXPECT_EQ(flag.use_count(), 1);  // the capture was released
}

TEST(SerialThreadQueueTest, RunsTasksInOrderOnItsOwnThread) {
  SerialThreadQueue queue;
  std::vector<int> order;
  std::vector<int> expected(100);
  std::iota(expected.begin(), expected.end(), 0);
  std::atomic<bool> onQueueThread{true};
  for (const int i : expected) {
    queue.post([&, i] {
      order.push_back(i);
      if (!queue.isCurrent()) onQueueThread = false;
    });
  }
  queue.drain();
  EXPECT_EQ(order, expected);
  EXPECT_TRUE(onQueueThread);
  EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialThreadQueueTest, DestructorRunsQueuedTasksFirst) {
  std::atomic<int> ran{0};
  {
    SerialThreadQueue queue;
    for (int i = 0; i < 10; ++i) queue.post([&] { ++ran; });
  }
  EXPECT_EQ(ran.load(), 10);
}

TEST(SerialThreadQueueTest, CanBeReleasedFromOneOfItsOwnTasks) {
  auto queue = std::make_shared<SerialThreadQueue>();
  std::atomic<bool> released{false};
  auto* raw = queue.get();
  raw->post([&released, q = std::move(queue)]() mutable {
    q.reset();  // the last reference goes away on the queue's own thread
    released = true;
  });
  for (int i = 0; i < 500 && !released; ++i) std::this_thread::sleep_for(10ms);
  EXPECT_TRUE(released);
}

}  // namespace
}  // namespace quorvel::platform
