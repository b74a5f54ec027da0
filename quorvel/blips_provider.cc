#include "quorvel/blips_provider.h"

#include <future>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include "quorvel/basic_client_headers.h"
#include "quorvel/core_logger.h"
#include "quorvel/core_version.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/provider_service.h"
#include "quorvel/random_uuid.h"

namespace quorvel {
namespace {

// Runs each task at once on the posting thread: the batch outcome is
// awaited by the sending thread, not by the host's main queue.
class ImmediateQueue final : public platform::MainQueue {
 public:
  void post(Task task) override {
    if (task) task();
  }
  bool isCurrent() const override { return false; }
};

platform::Error cancelled() {
  return platform::TransportError::make(platform::TransportErrorCode::kCancelled,
                                        "the core library has shut down");
}

}  // namespace

BlipsProvider::BlipsProvider(AccountDetails account, std::shared_ptr<platform::MainQueue> mainQueue,
                             std::filesystem::path queueFile, std::chrono::milliseconds delay,
                             std::chrono::milliseconds leaseTime)
    : account_(std::move(account)),
      mainQueue_(std::move(mainQueue)),
      delay_(delay),
      queue_(std::move(queueFile), leaseTime) {
  thread_ = std::thread([this] { run(); });
}

BlipsProvider::~BlipsProvider() {
  shutdown();
}

void BlipsProvider::send(const UserAction& blip, BlipsGroup group) {
  enqueue(blip.toJson(), group);
}

void BlipsProvider::send(const PageView& blip, BlipsGroup group) {
  enqueue(blip.toJson(), group);
}

void BlipsProvider::enqueue(boost::json::object blip, BlipsGroup group) {
  blip["group"] = blipsGroupName(group);
  blip["blip_id"] = randomUuid();
  if (!queue_.append(boost::json::serialize(blip))) {
    CoreLogger::error("Could not queue a blip");
    return;
  }
  {
    std::lock_guard lock(mutex_);
    if (!sendAt_) sendAt_ = std::chrono::steady_clock::now() + delay_;
  }
  wake_.notify_all();
}

void BlipsProvider::flush(FlushCallback callback) {
  {
    std::lock_guard lock(mutex_);
    if (!stopping_) {
      flushWaiters_.push_back(std::move(callback));
      wake_.notify_all();
      return;
    }
  }
  mainQueue_->post([callback = std::move(callback)] {
    if (callback) callback(cancelled());
  });
}

std::size_t BlipsProvider::pendingCount() {
  return queue_.count();
}

void BlipsProvider::requestStop() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
}

void BlipsProvider::shutdown() {
  requestStop();
  if (thread_.joinable()) thread_.join();
}

void BlipsProvider::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    const auto due = [this] {
      return stopping_ || !flushWaiters_.empty() ||
             (sendAt_ && std::chrono::steady_clock::now() >= *sendAt_);
    };
    if (sendAt_) {
      wake_.wait_until(lock, *sendAt_, due);
    } else {
      // A send time appearing also ends this wait, so that the loop comes
      // back to wait for that time rather than for another notification.
      wake_.wait(lock, [&] { return due() || sendAt_.has_value(); });
    }
    if (stopping_) break;
    if (!due()) continue;
    sendAt_.reset();
    auto waiters = std::move(flushWaiters_);
    flushWaiters_.clear();
    lock.unlock();
    const auto outcome = sendAll();
    for (auto& waiter : waiters) {
      mainQueue_->post([waiter = std::move(waiter), outcome] {
        if (waiter) waiter(outcome);
      });
    }
    lock.lock();
  }
  for (auto& waiter : flushWaiters_) {
    mainQueue_->post([waiter = std::move(waiter)] {
      if (waiter) waiter(cancelled());
    });
  }
  flushWaiters_.clear();
}

std::optional<platform::Error> BlipsProvider::sendAll() {
  while (true) {
    {
      std::lock_guard lock(mutex_);
      if (stopping_) return cancelled();
    }
    const auto batch = queue_.claim(kBatchSize);
    if (batch.rows.empty()) return std::nullopt;
    if (auto error = sendBatch(batch.rows)) {
      CoreLogger::warn(fmt::format("Sending {} blips failed, keeping them queued: {}",
                                   batch.rows.size(), error->debugDescription()));
      queue_.release(batch.lease);
      return error;
    }
    // Removed only after the service accepted them. A process killed before
    // this line leaves its lease behind, and a later sender sends the batch
    // again with the same blip ids.
    queue_.remove(batch.lease);
  }
}

std::optional<platform::Error> BlipsProvider::sendBatch(const std::vector<BlipQueue::Row>& rows) {
  boost::json::array blips;
  for (const auto& row : rows) {
    boost::system::error_code ec;
    auto parsed = boost::json::parse(row.second, ec);
    if (!ec) blips.push_back(std::move(parsed));
  }
  boost::json::object body;
  body["blips"] = std::move(blips);

  ProviderService service(
      account_, fmt::format("{}/api/mobile/sdk/blips.json", account_.quorvelUrl()), false,
      HttpMethod::post, std::make_shared<BasicClientHeaders>("quorvel-core", kCoreVersion),
      boost::json::serialize(body), std::make_shared<ImmediateQueue>());
  auto promise = std::make_shared<std::promise<std::optional<platform::Error>>>();
  auto future = promise->get_future();
  service.perform([promise](std::optional<std::string>, std::optional<HTTPURLResponse> response,
                            std::optional<platform::Error> error) {
    if (error) {
      promise->set_value(std::move(error));
    } else if (!response || response->statusCode() < 200 || response->statusCode() > 299) {
      const long status = response ? response->statusCode() : 0;
      promise->set_value(platform::Error::withDescription("com.quorvel.sdk", status,
                                                          fmt::format("HTTP Error: {}", status)));
    } else {
      promise->set_value(std::nullopt);
    }
  });
  // Bounded by the transport's time-outs; the transport's shutdown answers
  // it with the cancelled error.
  return future.get();
}

}  // namespace quorvel
