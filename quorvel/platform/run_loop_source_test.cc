// Run loop sources: the loop sleeps on their descriptors too and lets them
// work on its own thread.
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "quorvel/platform/run_loop.h"

namespace quorvel::platform {
namespace {

using namespace std::chrono_literals;

// A pipe whose read end the loop watches; perform() drains it.
class PipeSource final : public RunLoopSource {
 public:
  PipeSource() {
    int fds[2];
    EXPECT_EQ(::pipe(fds), 0);
    read_ = fds[0];
    write_ = fds[1];
  }
  ~PipeSource() override {
    ::close(read_);
    ::close(write_);
  }

  void signal() {
    const char byte = 1;
    EXPECT_EQ(::write(write_, &byte, 1), 1);
  }

  void loopEntered() override { events.push_back(depth++ == 0 ? "enter" : "enter-nested"); }
  void loopExited() override { events.push_back(--depth == 0 ? "exit" : "exit-nested"); }
  void descriptors(std::vector<pollfd>& watched) override {
    watched.push_back(pollfd{read_, POLLIN, 0});
  }
  void perform(std::span<const pollfd> ready) override {
    ASSERT_EQ(ready.size(), 1U);
    EXPECT_TRUE((ready[0].revents & POLLIN) != 0);
    char buffer[16];
    EXPECT_GT(::read(read_, buffer, sizeof buffer), 0);
    performedOn = std::this_thread::get_id();
    ++performed;
  }

  std::vector<std::string> events;
  int depth = 0;
  std::atomic<int> performed{0};
  std::thread::id performedOn;

 private:
  int read_ = -1;
  int write_ = -1;
};

TEST(RunLoopSourceTest, AReadyDescriptorWakesTheLoopAndIsHandledOnItsThread) {
  RunLoop loop;
  auto source = std::make_shared<PipeSource>();
  loop.addSource(source);
  std::thread signaller([&] {
    std::this_thread::sleep_for(20ms);
    source->signal();
  });
  EXPECT_TRUE(loop.runUntil([&] { return source->performed.load() == 1; }, 5s));
  signaller.join();
  EXPECT_EQ(source->performedOn, std::this_thread::get_id());
  EXPECT_EQ(source->events, (std::vector<std::string>{"enter", "exit"}));
}

TEST(RunLoopSourceTest, NestedPumpsAreAnnouncedAndRunPendingNeitherEntersNorSleeps) {
  RunLoop loop;
  auto source = std::make_shared<PipeSource>();
  loop.addSource(source);
  loop.post([&] { loop.runFor(1ms); });
  loop.runFor(5ms);
  loop.post([] {});
  loop.runPending();
  EXPECT_EQ(source->events,
            (std::vector<std::string>{"enter", "enter-nested", "exit-nested", "exit"}));
}

TEST(RunLoopSourceTest, ARemovedSourceIsNoLongerWatched) {
  RunLoop loop;
  auto source = std::make_shared<PipeSource>();
  loop.addSource(source);
  loop.removeSource(source);
  source->signal();
  EXPECT_FALSE(loop.runUntil([&] { return source->performed.load() > 0; }, 30ms));
  EXPECT_TRUE(source->events.empty());
}

// Without sources the loop sleeps on a condition variable, with one in
// poll(2): both wake for a task or stop() from another thread, and give up
// at the deadline.
class RunLoopWaitTest : public testing::TestWithParam<bool> {
 protected:
  RunLoopWaitTest() {
    if (GetParam()) loop_.addSource(source_);
  }
  RunLoop loop_;
  std::shared_ptr<PipeSource> source_ = std::make_shared<PipeSource>();
};

TEST_P(RunLoopWaitTest, ATaskAndStopFromAnotherThreadWakeIt) {
  std::atomic<bool> ran{false};
  std::thread poster([&] {
    std::this_thread::sleep_for(20ms);
    loop_.post([&] { ran = true; });
    std::this_thread::sleep_for(20ms);
    loop_.stop();
  });
  EXPECT_TRUE(loop_.runUntil([&] { return ran.load(); }, 5s));
  loop_.run();  // returns only because of stop()
  poster.join();
  EXPECT_EQ(source_->performed.load(), 0);
}

TEST_P(RunLoopWaitTest, RunUntilGivesUpAtTheDeadline) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(loop_.runUntil([] { return false; }, 50ms));
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, 50ms);
  EXPECT_LT(waited, 5s);
}

INSTANTIATE_TEST_SUITE_P(Sleeps, RunLoopWaitTest, testing::Bool(), [](const auto& param) {
  return std::string(param.param ? "OnASource" : "WithoutSources");
});

}  // namespace
}  // namespace quorvel::platform
