#pragma once

#include "tools/qvk/output.h"
#include "tools/qvk/parsed_command.h"
#include "tools/qvk/session.h"

namespace qvk {

// Runs one `hc` or `settings` command in a session; returns its exit status.
class CommandRunner {
 public:
  CommandRunner(Session& session, Output& output) : session_(session), output_(output) {}

  int run(const ParsedCommand& command);

 private:
  Session& session_;
  Output& output_;
};

}  // namespace qvk
