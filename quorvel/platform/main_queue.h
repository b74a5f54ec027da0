#pragma once

#include <functional>

namespace quorvel::platform {

// The "main queue": where answers meant for the host's main thread run.
// Callbacks of the libraries are posted here, never run inside the call that
// produced them. Implementations: RunLoop (pumped by the host) and
// SerialThreadQueue (a thread of its own). A host with its own event loop
// implements post() by handing the task to that loop.
class MainQueue {
 public:
  using Task = std::function<void()>;

  MainQueue() = default;
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;
  virtual ~MainQueue() = default;

  // Schedules `task` to run after every task posted before it. Safe from any
  // thread. Tasks must not throw.
  virtual void post(Task task) = 0;

  // True when the calling thread is the one that runs this queue's tasks.
  virtual bool isCurrent() const = 0;
};

}  // namespace quorvel::platform
