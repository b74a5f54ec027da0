#include "quorvel/platform/run_loop.h"

#include <algorithm>
#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace quorvel::platform {
namespace {

// poll(2)'s timeout for a deadline: rounded up, so that the loop does not
// wake just before it and sleep again for nothing.
int pollTimeout(std::chrono::steady_clock::time_point deadline) {
  if (deadline == std::chrono::steady_clock::time_point::max()) return -1;
  const auto left = deadline - std::chrono::steady_clock::now();
  if (left <= std::chrono::steady_clock::duration::zero()) return 0;
  const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
  return static_cast<int>(std::min<std::int64_t>(milliseconds, 24 * 3600 * 1000));
}

// Every loop that exists, with the thread that made it, so that current()
// finds a thread's loop and removeSourceIfAlive() never touches a dead one.
struct LiveLoop {
  RunLoop* loop;
  std::thread::id maker;
};

std::mutex& liveLoopsMutex() {
  static std::mutex m;
  return m;
}

std::vector<LiveLoop>& liveLoops() {
  static std::vector<LiveLoop> loops;
  return loops;
}

}  // namespace

RunLoop::RunLoop() {
  std::lock_guard lock(liveLoopsMutex());
  liveLoops().push_back(LiveLoop{this, std::this_thread::get_id()});
}

RunLoop::~RunLoop() {
  {
    std::lock_guard lock(liveLoopsMutex());
    auto& loops = liveLoops();
    loops.erase(std::remove_if(loops.begin(), loops.end(),
                               [this](const LiveLoop& live) { return live.loop == this; }),
                loops.end());
  }
  // Destroy the queued tasks outside the lock: their captures may post again.
  std::deque<Task> dropped;
  {
    std::lock_guard lock(mutex_);
    dropped.swap(tasks_);
  }
  if (wakeFd_ >= 0) ::close(wakeFd_);
}

void RunLoop::post(Task task) {
  if (!task) return;
  bool writeWake = false;
  {
    std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    if (sleepingInPoll_ && !wakeWritten_) writeWake = wakeWritten_ = true;
  }
  if (writeWake) {
    wakeSleeper();
  } else {
    wake_.notify_one();
  }
}

void RunLoop::wakeSleeper() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(wakeFd_, &one, sizeof one);
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
  bool writeWake = false;
  {
    std::lock_guard lock(mutex_);
    stopRequested_ = true;
    if (sleepingInPoll_ && !wakeWritten_) writeWake = wakeWritten_ = true;
  }
  if (writeWake) wakeSleeper();
  wake_.notify_all();
}

std::size_t RunLoop::pendingCount() const {
  std::lock_guard lock(mutex_);
  return tasks_.size();
}

void RunLoop::addSource(std::shared_ptr<RunLoopSource> source) {
  if (!source) return;
  std::lock_guard lock(mutex_);
  if (wakeFd_ < 0) wakeFd_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  // Without a wake-up descriptor a sleeping loop could miss a post.
  if (wakeFd_ < 0) return;
  sources_.push_back(std::move(source));
}

void RunLoop::removeSource(const std::shared_ptr<RunLoopSource>& source) {
  std::lock_guard lock(mutex_);
  sources_.erase(std::remove(sources_.begin(), sources_.end(), source), sources_.end());
}

RunLoop* RunLoop::current() {
  const auto self = std::this_thread::get_id();
  std::lock_guard lock(liveLoopsMutex());
  RunLoop* made = nullptr;
  for (const auto& live : liveLoops()) {
    if (live.loop->isCurrent()) return live.loop;
    if (live.maker == self) made = live.loop;
  }
  return made;
}

void RunLoop::removeSourceIfAlive(RunLoop* loop, const std::shared_ptr<RunLoopSource>& source) {
  // Held while removing, so that the loop cannot be destroyed meanwhile; its
  // destructor takes this lock before anything else.
  std::lock_guard lock(liveLoopsMutex());
  const auto& loops = liveLoops();
  const bool alive = std::any_of(loops.begin(), loops.end(),
                                 [loop](const LiveLoop& live) { return live.loop == loop; });
  if (alive) loop->removeSource(source);
}

std::size_t RunLoop::pump(const std::function<bool()>& done, Clock::time_point deadline,
                          bool wait) {
  const auto previous = pumpingThread_.exchange(std::this_thread::get_id());
  Sources sources;
  if (wait) {
    std::lock_guard lock(mutex_);
    sources = sources_;
  }
  for (const auto& source : sources) source->loopEntered();
  std::size_t ran = 0;
  while (!done()) {
    Task task;
    {
      std::unique_lock lock(mutex_);
      if (wait && tasks_.empty() && !stopRequested_ && Clock::now() < deadline) {
        if (sources.empty()) {
          wake_.wait_until(lock, deadline, [&] { return stopRequested_ || !tasks_.empty(); });
        } else {
          sleepWithSources(lock, sources, deadline);
          // A source's work may have made `done` true without a task.
          if (tasks_.empty() && !stopRequested_) continue;
        }
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
  for (const auto& source : sources) source->loopExited();
  pumpingThread_.store(previous);
  return ran;
}

void RunLoop::sleepWithSources(std::unique_lock<std::mutex>& lock, const Sources& sources,
                               Clock::time_point deadline) {
  sleepingInPoll_ = true;
  lock.unlock();

  std::vector<pollfd> watched{pollfd{wakeFd_, POLLIN, 0}};
  std::vector<std::size_t> ends;  // where each source's descriptors end
  ends.reserve(sources.size());
  for (const auto& source : sources) {
    source->descriptors(watched);
    ends.push_back(watched.size());
  }
  const int ready = ::poll(watched.data(), watched.size(), pollTimeout(deadline));

  lock.lock();
  sleepingInPoll_ = false;
  if (wakeWritten_) {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto drained = ::read(wakeFd_, &count, sizeof count);
    wakeWritten_ = false;
  }
  if (ready <= 0) return;
  lock.unlock();
  std::size_t begin = 1;
  for (std::size_t i = 0; i < sources.size(); ++i) {
    const std::span<const pollfd> own(watched.data() + begin, ends[i] - begin);
    if (std::any_of(own.begin(), own.end(), [](const pollfd& p) { return p.revents != 0; })) {
      sources[i]->perform(own);
    }
    begin = ends[i];
  }
  lock.lock();
}

}  // namespace quorvel::platform
