#include "quorvel/transfer_handle.h"

#include "quorvel/platform/main_queue.h"

namespace quorvel {

void TransferHandle::cancel() {
  std::function<void()> wake;
  {
    std::lock_guard lock(mutex_);
    if (cancelled_.exchange(true)) return;
    wake = std::move(wake_);
  }
  if (wake) wake();
}

void TransferHandle::deliverOn(std::shared_ptr<platform::MainQueue> queue) {
  std::lock_guard lock(mutex_);
  queue_ = std::move(queue);
}

void TransferHandle::onCancel(std::function<void()> wake) {
  {
    std::lock_guard lock(mutex_);
    if (!cancelled_.load()) {
      wake_ = std::move(wake);
      return;
    }
  }
  if (wake) wake();
}

void TransferHandle::report(std::int64_t done, std::int64_t total, bool final) {
  if (!progress_) return;
  std::shared_ptr<platform::MainQueue> queue;
  {
    std::lock_guard lock(mutex_);
    if (cancelled_.load() || finalReported_ || !queue_) return;
    const auto now = std::chrono::steady_clock::now();
    if (!final && (done == 0 || (lastReport_ && now - *lastReport_ < kProgressInterval))) return;
    lastReport_ = now;
    finalReported_ = final;
    queue = queue_;
  }
  // Checked again where it is delivered: a count already queued when the
  // caller cancels is not shown after the cancel.
  queue->post([self = shared_from_this(), done, total] {
    if (!self->cancelled()) self->progress_(done, total);
  });
}

}  // namespace quorvel
