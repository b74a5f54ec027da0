#include "quorvel/platform/run_loop.h"

namespace quorvel::platform {

RunLoop::~RunLoop() {
  // Destroy the queued tasks outside the lock: their captures may post again.
  std::deque<Task> dropped;
  {
    std::lock_guard lock(mutex_);
    dropped.swap(tasks_);
  }
}

void RunLoop::post(Task task) {
  if (!task) return;
  {
    std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  wake_.notify_one();
}

bool RunLoop::isCurrent() const {
  return pumpingThread_.load() == std::this_thread::get_id();
}

void RunLoop::run() {
  pump([] { return false; }, Clock::time_point::max(), true);
}

std::size_t RunLoop::runFor(std::chrono::milliseconds duration) {
  return pump([] { return false; }, Clock::now() + duration, true);
}

bool RunLoop::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  pump(done, Clock::now() + timeout, true);
  return done();
}

std::size_t RunLoop::runPending() {
  return pump([] { return false; }, Clock::now(), false);
}

void RunLoop::stop() {
  {
    std::lock_guard lock(mutex_);
    stopRequested_ = true;
  }
  wake_.notify_all();
}

std::size_t RunLoop::pendingCount() const {
  std::lock_guard lock(mutex_);
  return tasks_.size();
}

std::size_t RunLoop::pump(const std::function<bool()>& done, Clock::time_point deadline,
                          bool wait) {
  const auto previous = pumpingThread_.exchange(std::this_thread::get_id());
  std::size_t ran = 0;
  while (!done()) {
    Task task;
    {
      std::unique_lock lock(mutex_);
      if (wait) {
        wake_.wait_until(lock, deadline, [&] { return stopRequested_ || !tasks_.empty(); });
      }
      if (stopRequested_) {
        stopRequested_ = false;
        break;
      }
      if (tasks_.empty()) break;  // deadline passed, or not waiting
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
    ++ran;
    if (Clock::now() >= deadline && wait) break;
  }
  pumpingThread_.store(previous);
  return ran;
}

}  // namespace quorvel::platform
