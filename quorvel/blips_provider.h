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
// batches with POST /api/mobile/sdk/blips.json {"blips":[...]}. Each blip
// gets a random "blip_id" when it is queued, so that the service can drop
// one it has already accepted. A send() schedules a batch after a short
// delay, so that a burst of events goes in one request. A batch is claimed
// in the queue before it leaves, so that processes sharing the data folder
// never send the same blips at once; a batch that fails is released for the
// next send() or flush(), and a batch the service accepted is removed. A
// batch is sent again only when its answer was lost (the holder was killed,
// or the answer never came): at least once, not exactly once.
class BlipsProvider {
 public:
  using FlushCallback = std::function<void(std::optional<platform::Error>)>;

  static constexpr std::size_t kBatchSize = 50;

  // `leaseTime`: how long a claimed batch stays this process's (longer than
  // a request can take).
  BlipsProvider(AccountDetails account, std::shared_ptr<platform::MainQueue> mainQueue,
                std::filesystem::path queueFile, std::chrono::milliseconds delay,
                std::chrono::milliseconds leaseTime);
  // Stops the sending thread; what is still queued stays on disk.
  ~BlipsProvider();
  BlipsProvider(const BlipsProvider&) = delete;
  BlipsProvider& operator=(const BlipsProvider&) = delete;

  void send(const UserAction& blip, BlipsGroup group);
  void send(const PageView& blip, BlipsGroup group);

  // Sends everything queued now that no other sender holds, then calls back
  // on the main queue: nothing when that was sent, else the error that stopped it (the
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
