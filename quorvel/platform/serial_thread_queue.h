#pragma once

#include <memory>
#include <string>

#include "quorvel/platform/main_queue.h"

namespace quorvel::platform {

// A main queue with a thread of its own, for hosts that do not pump a loop.
// Tasks run one at a time in the order posted.
class SerialThreadQueue final : public MainQueue {
 public:
  explicit SerialThreadQueue(std::string name = "quorvel-main");
  // Runs the tasks already queued, then ends the thread. When the last
  // reference goes away on the queue's own thread, the thread finishes the
  // queued tasks by itself and ends.
  ~SerialThreadQueue() override;

  void post(Task task) override;
  bool isCurrent() const override;

  // Blocks until every task posted before the call has run. Must not be
  // called from the queue's own thread (it returns at once there).
  void drain();

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace quorvel::platform
