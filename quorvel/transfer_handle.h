#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace quorvel {

namespace platform {
class MainQueue;
}

// The caller's hold on one transfer: cancel it, and hear how far it got.
// cancel() may be called from any thread, any number of times: the request is
// then answered once with the cancelled error (-999), unless it had been
// answered already, and nothing more of it is sent or reported.
//
// Progress (bytes sent and total for a request with a body, bytes received
// and expected otherwise; the total is 0 while unknown) is reported by the
// transport on whichever thread drives the transfer, and delivered on the
// queue the request answers on: at most once per kProgressInterval, then
// once more with the final count just before a successful answer.
class TransferHandle : public std::enable_shared_from_this<TransferHandle> {
 public:
  using Progress = std::function<void(std::int64_t done, std::int64_t total)>;
  static constexpr std::chrono::milliseconds kProgressInterval{100};

  static std::shared_ptr<TransferHandle> make(Progress progress = {}) {
    return std::shared_ptr<TransferHandle>(new TransferHandle(std::move(progress)));
  }
  TransferHandle(const TransferHandle&) = delete;
  TransferHandle& operator=(const TransferHandle&) = delete;

  void cancel();
  bool cancelled() const { return cancelled_.load(); }

  // The transport's side. Where progress is delivered (set when the request
  // is performed).
  void deliverOn(std::shared_ptr<platform::MainQueue> queue);
  // Run (once) by cancel() to wake whoever drives the transfer; at once when
  // the handle is already cancelled.
  void onCancel(std::function<void()> wake);
  // A new count; dropped when it comes sooner than kProgressInterval after
  // the last one delivered, unless it is the final one.
  void report(std::int64_t done, std::int64_t total, bool final);

 private:
  explicit TransferHandle(Progress progress) : progress_(std::move(progress)) {}

  const Progress progress_;
  std::atomic<bool> cancelled_{false};
  std::mutex mutex_;  // guards what follows
  std::shared_ptr<platform::MainQueue> queue_;
  std::function<void()> wake_;
  std::optional<std::chrono::steady_clock::time_point> lastReport_;
  bool finalReported_ = false;
};

}  // namespace quorvel
