#pragma once

#include <istream>
#include <ostream>
#include <string>

#include "tools/qvk/command_runner.h"

namespace qvk {

// `qvk shell`: one command per line, split like a POSIX shell splits words,
// all run in the same session so that the library's memory (last search,
// caches) carries from one to the next. "exit" or "quit" or the end of input
// ends it. A failing line does not end the session; the shell's status is
// the worst status of its lines (0, 1 or 2).
class Shell {
 public:
  static constexpr const char* kPrompt = "qvk> ";

  Shell(CommandRunner& runner, std::istream& in, std::ostream& out, std::ostream& err,
        bool interactive)
      : runner_(runner), in_(in), out_(out), err_(err), interactive_(interactive) {}

  int run();

 private:
  // The line's status, or nothing when the line ends the session.
  std::optional<int> runLine(const std::string& line);

  CommandRunner& runner_;
  std::istream& in_;
  std::ostream& out_;
  std::ostream& err_;
  bool interactive_;
};

}  // namespace qvk
