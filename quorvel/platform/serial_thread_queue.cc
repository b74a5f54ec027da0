#include "quorvel/platform/serial_thread_queue.h"

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>

#include <pthread.h>

namespace quorvel::platform {

// Shared between the object and its thread, so that the thread can outlive an
// object destroyed from one of its own tasks.
struct SerialThreadQueue::State {
  std::mutex mutex;
  std::condition_variable wake;
  std::deque<Task> tasks;
  bool stopping = false;
  std::thread thread;
  std::thread::id threadId;

  static void loop(const std::shared_ptr<State>& self) {
    for (;;) {
      Task task;
      {
        std::unique_lock lock(self->mutex);
        self->wake.wait(lock, [&] { return self->stopping || !self->tasks.empty(); });
        if (self->tasks.empty()) return;  // stopping and drained
        task = std::move(self->tasks.front());
        self->tasks.pop_front();
      }
      task();
    }
  }
};

SerialThreadQueue::SerialThreadQueue(std::string name) : state_(std::make_shared<State>()) {
  std::promise<void> started;
  auto ready = started.get_future();
  state_->thread =
      std::thread([state = state_, name = std::move(name), started = std::move(started)]() mutable {
        // Thread names are limited to 15 characters by the kernel.
        pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
        state->threadId = std::this_thread::get_id();
        started.set_value();
        State::loop(state);
      });
  ready.wait();
}

SerialThreadQueue::~SerialThreadQueue() {
  {
    std::lock_guard lock(state_->mutex);
    state_->stopping = true;
  }
  state_->wake.notify_all();
  if (isCurrent()) {
    state_->thread.detach();  // the loop holds the state and ends by itself
  } else {
    state_->thread.join();
  }
}

void SerialThreadQueue::post(Task task) {
  if (!task) return;
  // The task may release the last reference to this queue as soon as it is
  // queued, so keep the state alive until the notification is sent.
  const auto state = state_;
  {
    std::lock_guard lock(state->mutex);
    state->tasks.push_back(std::move(task));
  }
  state->wake.notify_one();
}

bool SerialThreadQueue::isCurrent() const {
  return state_->threadId == std::this_thread::get_id();
}

void SerialThreadQueue::drain() {
  if (isCurrent()) return;
  std::promise<void> reached;
  auto future = reached.get_future();
  post([&reached] { reached.set_value(); });
  future.wait();
}

}  // namespace quorvel::platform
