#pragma once

#include <cstdint>
#include <string>

namespace quorvel {

// This process as other processes sharing a data folder see it: the host it
// runs on and its pid, and whether a pid on this host is gone. Stores that
// lease rows to one process (the blip queue, the outbox) use it to end the
// lease of a holder that was killed.
class LocalProcess {
 public:
  static std::string hostName();
  static std::int64_t id();
  // True only when no process `pid` exists on this host. Another pid
  // namespace on the same host may make a live process look gone.
  static bool gone(std::int64_t pid);
};

}  // namespace quorvel
