#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "quorvel/platform/run_loop.h"

namespace qvk {

// The lines of a readable descriptor (for `qvk shell`, standard input), read
// on the session's run loop: the descriptor is one of the loop's sources, so
// while the shell waits for a line the loop sleeps in poll(2) on it and on the
// transport, and keeps running the main queue's tasks. Work that an answer
// started (an article view, blips) thus leaves while the prompt waits, not
// when the next line comes.
class InputLines {
 public:
  InputLines(int fd, std::shared_ptr<quorvel::platform::RunLoop> loop);
  ~InputLines();
  InputLines(const InputLines&) = delete;
  InputLines& operator=(const InputLines&) = delete;

  // Pumps the loop until a whole line was read, the input ended, or `limit`
  // passed (no limit: a person may take as long as they like). The line
  // without its newline; a last line without one counts too. Nothing at the
  // end of input or when the limit passed.
  std::optional<std::string> next(std::optional<std::chrono::milliseconds> limit = std::nullopt);

  // The input ended and every line was taken.
  bool ended() const;

 private:
  class Source;

  std::shared_ptr<Source> source_;
  std::shared_ptr<quorvel::platform::RunLoop> loop_;
};

}  // namespace qvk
