#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/qvk/parse_outcome.h"

namespace qvk {

// Parses qvk's command line (global options, then a command) and shell lines
// (a command only). Parsing never exits the process and never reads the
// environment directly: the caller hands in the lookup, so that tests can.
class CommandLine {
 public:
  using Environment = std::function<std::optional<std::string>(const std::string& name)>;

  // The process environment; empty values count as unset.
  static Environment processEnvironment();

  // `args` without the program name. Defaults for --url, --app-id,
  // --client-id and --data-dir come from QVK_URL, QVK_APP_ID, QVK_CLIENT_ID
  // and QVK_DATA_DIR.
  static ParseOutcome parse(const std::vector<std::string>& args, const Environment& environment);

  // One line of `qvk shell`, already split into words: a command of a group
  // that may run in the shell, optionally preceded by "qvk". Global options
  // belong to the shell itself and are refused here.
  static ParseOutcome parseCommand(const std::vector<std::string>& words);
};

}  // namespace qvk
