#pragma once

#include <ostream>

#include "tools/qvk/parse_outcome.h"

namespace qvk {

// qvk after parsing: opens the session, runs the command (which for `qvk
// shell` reads `inputFd`), lets in-flight work finish and returns the exit
// status.
class Program {
 public:
  static int run(const ParseOutcome& parsed, int inputFd, std::ostream& out, std::ostream& err,
                 bool interactive);
};

}  // namespace qvk
