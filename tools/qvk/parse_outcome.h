#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/qvk/command_group.h"
#include "tools/qvk/global_options.h"

namespace qvk {

// The result of parsing: either a command to run (the group that holds its
// arguments), or an exit status with the text to show (help on standard
// output with 0, a usage error on standard error with 2).
struct ParseOutcome {
  std::optional<int> exitCode;
  std::string message;
  GlobalOptions options;
  std::shared_ptr<const CommandGroup> command;

  bool shouldRun() const { return !exitCode.has_value(); }
};

}  // namespace qvk
