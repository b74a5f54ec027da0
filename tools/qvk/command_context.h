#pragma once

#include "tools/qvk/output.h"
#include "tools/qvk/session.h"

namespace qvk {

// What a command runs with: the session (the libraries and their main queue)
// and where its results go. Standard input is read by `qvk shell` alone,
// through the session's run loop.
struct CommandContext {
  Session& session;
  Output& output;
  int inputFd = 0;
  // Standard input is a terminal: the shell shows a prompt.
  bool interactive = false;
};

}  // namespace qvk
