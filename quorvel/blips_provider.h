#pragma once

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "quorvel/account_details.h"
#include "quorvel/blip_queue.h"
#include "quorvel/blips_group.h"
#include "quorvel/page_view.h"
#include "quorvel/platform/error.h"
#include "quorvel/platform/main_queue.h"
#include "quorvel/user_action.h"

namespace quorvel {

// Usage events: accepted from any thread, queued durably, and sent in
// batches with POST /api/mobile/sdk/blips.json {"blips":[...]}. A send()
// schedules a batch after a short delay, so that a burst of events goes in
// one request; a batch that fails stays queued for the next send() or
// flush(), and a batch the service accepted is removed, never sent again.
class BlipsProvider {
 public:
  using FlushCallback = std::function<void(std::optional<platform::Error>)>;

  static constexpr std::size_t kBatchSize = 50;

  BlipsProvider(AccountDetails account, std::shared_ptr<platform::MainQueue> mainQueue,
                std::filesystem::path queueFile, std::chrono::milliseconds delay);
  // Stops the sending thread; what is still queued stays on disk.
  ~BlipsProvider();
  BlipsProvider(const BlipsProvider&) = delete;
  BlipsProvider& operator=(const BlipsProvider&) = delete;

  void send(const UserAction& blip, BlipsGroup group);
  void send(const PageView& blip, BlipsGroup group);

  // Sends everything queued now, then calls back on the main queue: nothing
  // when the queue was emptied, else the error that stopped it (the
  // cancelled transport error when the core shut down first).
  void flush(FlushCallback callback);

  std::size_t pendingCount();

  // Makes the sending thread stop after the batch in flight (which the
  // transport's shutdown cancels); join with shutdown().
  void requestStop();
  void shutdown();

 private:
  void enqueue(boost::json::object blip, BlipsGroup group);
  void run();
  std::optional<platform::Error> sendAll();
  std::optional<platform::Error> sendBatch(const std::vector<BlipQueue::Row>& rows);

  AccountDetails account_;
  std::shared_ptr<platform::MainQueue> mainQueue_;
  std::chrono::milliseconds delay_;
  BlipQueue queue_;

  std::mutex mutex_;
  std::condition_variable wake_;
  bool stopping_ = false;
  std::optional<std::chrono::steady_clock::time_point> sendAt_;
  std::vector<FlushCallback> flushWaiters_;
  std::thread thread_;
};

}  // namespace quorvel
