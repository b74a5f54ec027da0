#include "tools/qvk/shell_group.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "tools/qvk/command_line.h"
#include "tools/qvk/input_lines.h"
#include "tools/qvk/shell_words.h"

namespace qvk {

void ShellGroup::declare(CLI::App& root) {
  command(&root, "shell",
          "Read commands from standard input and run them in one process, keeping the "
          "library's memory between them",
          &ShellGroup::readCommands);
}

int ShellGroup::readCommands(CommandContext& context) const {
  auto& out = context.output.text();
  InputLines input(context.inputFd, context.session.loop());
  int worst = 0;
  while (true) {
    if (context.interactive) out << kPrompt << std::flush;
    auto line = input.next();
    if (!line) break;
    auto status = runLine(context, *line);
    if (!status) break;
    worst = std::max(worst, *status);
  }
  if (context.interactive) out << '\n' << std::flush;
  return worst;
}

std::optional<int> ShellGroup::runLine(CommandContext& context, const std::string& line) {
  auto& err = context.output.errorText();
  auto words = ShellWords::split(line);
  if (!words) {
    err << "error: " << words.error().localizedDescription() << '\n' << std::flush;
    return 2;
  }
  if (words->empty()) return 0;
  if (words->size() == 1 && (words->front() == "exit" || words->front() == "quit")) {
    return std::nullopt;
  }
  if (words->size() == 1 && words->front() == "help") *words = {"--help"};
  auto outcome = CommandLine::parseCommand(*words);
  if (!outcome.shouldRun()) {
    (*outcome.exitCode == 0 ? context.output.text() : err) << outcome.message << std::flush;
    return *outcome.exitCode;
  }
  return outcome.command->run(context);
}

}  // namespace qvk
