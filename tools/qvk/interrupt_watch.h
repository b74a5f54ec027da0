#pragma once

#include <memory>

#include "quorvel/platform/run_loop.h"

namespace qvk {

// While it exists, SIGINT does not end the process: it counts as
// interrupted, and a pump of `loop` waiting for that sees it at once. The signal handler writes one
// byte to a pipe that is a source of the loop, so the loop wakes from its sleep on whichever thread
// the signal arrived. The previous handler comes back on destruction.
class InterruptWatch {
 public:
  explicit InterruptWatch(std::shared_ptr<quorvel::platform::RunLoop> loop);
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  // False when the handler could not be installed.
  bool installed() const { return installed_; }
  bool interrupted() const;

 private:
  class Source;

  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<Source> source_;
  int readFd_ = -1;
  int writeFd_ = -1;
  bool installed_ = false;
};

}  // namespace qvk
