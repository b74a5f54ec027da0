#pragma once

#include <istream>
#include <ostream>

#include "tools/qvk/parse_outcome.h"

namespace qvk {

// qvk after parsing: opens the session, runs the command or the shell, lets
// in-flight work finish and returns the exit status.
class Program {
 public:
  static int run(const ParseOutcome& parsed, std::istream& in, std::ostream& out, std::ostream& err,
                 bool interactive);
};

}  // namespace qvk
