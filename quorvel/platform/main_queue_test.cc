// Run loop and serial thread queue: ordering, waiting, stopping, threads.
#include <atomic>
#include <chrono>
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

TEST(RunLoopTest, RunUntilReturnsFalseWhenTheConditionNeverHolds) {
  RunLoop loop;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(loop.runUntil([] { return false; }, 50ms));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 50ms);
}

TEST(RunLoopTest, RunUntilWakesForATaskPostedFromAnotherThread) {
  RunLoop loop;
  std::atomic<bool> ran{false};
  std::thread poster([&] {
    std::this_thread::sleep_for(20ms);
    loop.post([&] { ran = true; });
  });
  EXPECT_TRUE(loop.runUntil([&] { return ran.load(); }, 5s));
  poster.join();
}

TEST(RunLoopTest, StopFromAnotherThreadEndsRun) {
  RunLoop loop;
  std::thread stopper([&] {
    std::this_thread::sleep_for(20ms);
    loop.stop();
  });
  loop.run();  // returns only because of stop()
  stopper.join();
  SUCCEED();
}

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
  std::atomic<bool> onQueueThread{true};
  for (int i = 0; i < 100; ++i) {
    queue.post([&, i] {
      order.push_back(i);
      if (!queue.isCurrent()) onQueueThread = false;
    });
  }
  queue.drain();
  ASSERT_EQ(order.size(), 100U);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
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
