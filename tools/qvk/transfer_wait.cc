#include "tools/qvk/transfer_wait.h"

#include <csignal>

#include <fmt/format.h>
#include <unistd.h>

namespace qvk {
namespace {

volatile std::sig_atomic_t interruptedFlag = 0;
struct sigaction previousAction {};

void onInterrupt(int) {
  interruptedFlag = 1;
}

}  // namespace

TransferWait::TransferWait(CommandContext& context, std::string label)
    : context_(context),
      label_(std::move(label)),
      bar_(!context.output.json() && ::isatty(STDERR_FILENO) == 1) {
  interruptedFlag = 0;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  ::sigaction(SIGINT, &action, &previousAction);
}

TransferWait::~TransferWait() {
  ::sigaction(SIGINT, &previousAction, nullptr);
}

bool TransferWait::interrupted() const {
  return interruptedFlag != 0;
}

quorvel::TransferHandle::Progress TransferWait::progress() {
  if (!bar_) return {};
  return [this](std::int64_t done, std::int64_t total) { draw(done, total); };
}

void TransferWait::draw(std::int64_t done, std::int64_t total) {
  constexpr int kWidth = 30;
  const double part = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0.0;
  const int filled = static_cast<int>(part * kWidth);
  context_.output.errorText() << fmt::format("\r{} [{}{}] {:3.0f}%  {:.1f} / {:.1f} MB", label_,
                                             std::string(filled, '#'),
                                             std::string(kWidth - filled, '.'), part * 100,
                                             done / 1e6, total / 1e6)
                              << std::flush;
  drawn_ = true;
}

void TransferWait::wait(const std::shared_ptr<quorvel::TransferHandle>& handle,
                        const std::function<bool()>& arrived) {
  // Short pumps, so that a Ctrl-C is seen within one of them; bounded by a
  // day in all, though the transport ends a stalled transfer long before.
  constexpr auto kPump = std::chrono::milliseconds(100);
  const auto until = std::chrono::steady_clock::now() + std::chrono::hours(24);
  while (!arrived() && std::chrono::steady_clock::now() < until) {
    if (interrupted() && !handle->cancelled()) handle->cancel();
    context_.session.loop()->runUntil(arrived, kPump);
  }
  // The bar's line ends before the command prints its result.
  if (drawn_) context_.output.errorText() << "\n" << std::flush;
  drawn_ = false;
}

}  // namespace qvk
