#pragma once

#include <optional>
#include <string>

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk shell`: one command per line, split like a POSIX shell splits words,
// all run in the same session so that the library's memory (last search,
// caches) carries from one to the next. "exit" or "quit" or the end of input
// ends it. A failing line does not end the session; the shell's status is
// the worst status of its lines (0, 1 or 2). Lines come through the session's
// run loop, which keeps running while the shell waits for the next one.
class ShellGroup final : public CommandGroup {
 public:
  static constexpr const char* kPrompt = "qvk> ";

  void declare(CLI::App& root) override;
  // A shell inside the shell would only share its input.
  bool inShell() const override { return false; }

 private:
  int readCommands(CommandContext& context) const;
  // The line's status, or nothing when the line ends the session.
  static std::optional<int> runLine(CommandContext& context, const std::string& line);
};

}  // namespace qvk
