#pragma once

#include <optional>
#include <string>

#include "tools/qvk/global_options.h"
#include "tools/qvk/parsed_command.h"

namespace qvk {

// The result of parsing: either a command to run, or an exit status with the
// text to show (help on standard output with 0, a usage error on standard
// error with 2).
struct ParseOutcome {
  std::optional<int> exitCode;
  std::string message;
  GlobalOptions options;
  ParsedCommand command;

  bool shouldRun() const { return !exitCode.has_value(); }
};

}  // namespace qvk
