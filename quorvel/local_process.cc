#include "quorvel/local_process.h"

#include <cerrno>
#include <csignal>

#include <unistd.h>

namespace quorvel {

std::string LocalProcess::hostName() {
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? std::string(name) : std::string();
}

std::int64_t LocalProcess::id() {
  return static_cast<std::int64_t>(getpid());
}

bool LocalProcess::gone(std::int64_t pid) {
  return pid > 0 && kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
}

}  // namespace quorvel
