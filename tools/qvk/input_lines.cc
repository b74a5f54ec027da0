#include "tools/qvk/input_lines.h"

#include <cerrno>
#include <deque>
#include <string_view>

#include <unistd.h>

#include "quorvel/platform/run_loop_source.h"

namespace qvk {

// Reads on the loop's thread whenever poll(2) finds the descriptor ready and
// keeps the complete lines until the shell takes them.
class InputLines::Source final : public quorvel::platform::RunLoopSource {
 public:
  explicit Source(int fd) : fd_(fd) {}

  // A line waits, or there will be none.
  bool ready() const { return !lines_.empty() || ended_; }

  bool ended() const { return ended_ && lines_.empty(); }

  std::optional<std::string> take() {
    if (lines_.empty()) return std::nullopt;
    auto line = std::move(lines_.front());
    lines_.pop_front();
    return line;
  }

  void loopEntered() override {}
  void loopExited() override {}

  void descriptors(std::vector<pollfd>& watched) override {
    // Read ahead no further than a line: a command's own pumps run while
    // the shell holds the previous line, and the rest of the input can wait
    // in the descriptor. Past the end, poll would only report it again.
    if (!ready()) watched.push_back(pollfd{fd_, POLLIN, 0});
  }

  void perform(std::span<const pollfd>) override {
    char buffer[16 * 1024];
    // One read: poll said it would not block, a second might.
    const auto count = ::read(fd_, buffer, sizeof buffer);
    if (count > 0) return split(std::string_view(buffer, static_cast<std::size_t>(count)));
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
    end();  // end of input, or a descriptor that cannot be read
  }

 private:
  void split(std::string_view chunk) {
    partial_ += chunk;
    std::size_t start = 0;
    for (auto newline = partial_.find('\n'); newline != std::string::npos;
         newline = partial_.find('\n', start)) {
      lines_.push_back(partial_.substr(start, newline - start));
      start = newline + 1;
    }
    partial_.erase(0, start);
  }

  void end() {
    ended_ = true;
    if (!partial_.empty()) lines_.push_back(std::move(partial_));
    partial_.clear();
  }

  int fd_;
  std::string partial_;
  std::deque<std::string> lines_;
  bool ended_ = false;
};

InputLines::InputLines(int fd, std::shared_ptr<quorvel::platform::RunLoop> loop)
    : source_(std::make_shared<Source>(fd)), loop_(std::move(loop)) {
  loop_->addSource(source_);
}

InputLines::~InputLines() {
  loop_->removeSource(source_);
}

std::optional<std::string> InputLines::next(std::optional<std::chrono::milliseconds> limit) {
  const auto ready = [this] { return source_->ready(); };
  if (limit) {
    loop_->runUntil(ready, *limit);
    return source_->take();
  }
  // The loop takes a time limit; an hour at a time stands for none.
  bool done = false;
  while (!done) done = loop_->runUntil(ready, std::chrono::hours(1));
  return source_->take();
}

bool InputLines::ended() const {
  return source_->ended();
}

}  // namespace qvk
