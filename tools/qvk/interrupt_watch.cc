#include "tools/qvk/interrupt_watch.h"

#include <atomic>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

#include "quorvel/platform/run_loop_source.h"

namespace qvk {
namespace {

// The write end of the current watch's pipe, for the signal handler.
std::atomic<int> interruptWriteFd{-1};
struct sigaction previousAction {};

void onInterrupt(int) {
  const int fd = interruptWriteFd.load();
  const char byte = 1;
  if (fd >= 0) {
    [[maybe_unused]] const auto written = ::write(fd, &byte, 1);
  }
}

}  // namespace

class InterruptWatch::Source final : public quorvel::platform::RunLoopSource {
 public:
  explicit Source(int readFd) : readFd_(readFd) {}

  void loopEntered() override {}
  void loopExited() override {}
  void descriptors(std::vector<pollfd>& watched) override {
    watched.push_back(pollfd{readFd_, POLLIN, 0});
  }
  void perform(std::span<const pollfd>) override {
    char buffer[64];
    while (::read(readFd_, buffer, sizeof buffer) > 0) {
    }
    // The pump asks its `done` again after a source's work; stop() here
    // would also end the next pump, the one that lets work in flight leave.
    interrupted_ = true;
  }

  bool interrupted() const { return interrupted_; }

 private:
  int readFd_;
  bool interrupted_ = false;
};

InterruptWatch::InterruptWatch(std::shared_ptr<quorvel::platform::RunLoop> loop)
    : loop_(std::move(loop)) {
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC | O_NONBLOCK) != 0) return;
  readFd_ = fds[0];
  writeFd_ = fds[1];
  interruptWriteFd = writeFd_;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  if (::sigaction(SIGINT, &action, &previousAction) != 0) return;
  source_ = std::make_shared<Source>(readFd_);
  loop_->addSource(source_);
  installed_ = true;
}

InterruptWatch::~InterruptWatch() {
  if (installed_) ::sigaction(SIGINT, &previousAction, nullptr);
  interruptWriteFd = -1;
  if (source_) loop_->removeSource(source_);
  if (readFd_ >= 0) ::close(readFd_);
  if (writeFd_ >= 0) ::close(writeFd_);
}

bool InterruptWatch::interrupted() const {
  return source_ && source_->interrupted();
}

}  // namespace qvk
