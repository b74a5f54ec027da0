#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "quorvel/platform/main_queue.h"
#include "quorvel/platform/run_loop_source.h"

namespace quorvel::platform {

// A main queue that the host pumps from its main thread. Whichever thread
// pumps it is the main thread while it does so. Tasks run in the order they
// were posted; a task posted while the loop runs is run in the same pump.
// Sources (the core library's transport, for one) let the loop sleep on
// their descriptors too and do their work on its thread when they are ready.
class RunLoop final : public MainQueue {
 public:
  RunLoop();
  // Tasks still queued are destroyed without being run.
  ~RunLoop() override;

  void post(Task task) override;
  bool isCurrent() const override;

  // Runs tasks until stop() is called.
  void run();
  // Runs tasks for `duration`, waiting for new ones when the queue is empty.
  // Returns the number of tasks run.
  std::size_t runFor(std::chrono::milliseconds duration);
  // Runs tasks until `done()` is true (checked before waiting and after every
  // task) or `timeout` has passed. Returns the final value of `done()`.
  bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
  // Runs the tasks that are queued now (and those they post), without waiting.
  std::size_t runPending();
  // Makes the current (or, if none is running, the next) run, runFor or
  // runUntil return after the task in progress. Safe from any thread.
  void stop();

  std::size_t pendingCount() const;

  // Adds or removes a source; safe from any thread. A pump that is under way
  // goes on with the sources it began with.
  void addSource(std::shared_ptr<RunLoopSource> source);
  void removeSource(const std::shared_ptr<RunLoopSource>& source);

  // The calling thread's run loop: the one it is pumping, else the last one
  // made on it that still exists; null when it has none. Like a phone
  // platform's current run loop, for work scheduled "on this thread's loop".
  static RunLoop* current();
  // removeSource on `loop` if it still exists; whoever kept a loop's address
  // from current() uses this, since the loop may be gone by then.
  static void removeSourceIfAlive(RunLoop* loop, const std::shared_ptr<RunLoopSource>& source);

 private:
  using Clock = std::chrono::steady_clock;
  using Sources = std::vector<std::shared_ptr<RunLoopSource>>;

  // Runs tasks until `done`, the deadline or stop(); returns tasks run.
  std::size_t pump(const std::function<bool()>& done, Clock::time_point deadline, bool wait);
  // Sleeps until a task, stop(), the deadline or a ready source descriptor;
  // runs the ready sources. Called with `lock` held, returns with it held.
  void sleepWithSources(std::unique_lock<std::mutex>& lock, const Sources& sources,
                        Clock::time_point deadline);
  void wakeSleeper();

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Task> tasks_;
  bool stopRequested_ = false;
  std::atomic<std::thread::id> pumpingThread_{};
  Sources sources_;
  // While sources exist the loop sleeps in poll(2), woken through this
  // descriptor; a post writes to it only when the loop sleeps.
  int wakeFd_ = -1;
  bool sleepingInPoll_ = false;
  bool wakeWritten_ = false;
};

}  // namespace quorvel::platform
