#include "tools/qvk/shell.h"

#include <algorithm>

#include "tools/qvk/command_line.h"
#include "tools/qvk/shell_words.h"

namespace qvk {

int Shell::run() {
  int worst = 0;
  std::string line;
  while (true) {
    if (interactive_) out_ << kPrompt << std::flush;
    if (!std::getline(in_, line)) break;
    auto status = runLine(line);
    if (!status) break;
    worst = std::max(worst, *status);
  }
  if (interactive_) out_ << '\n' << std::flush;
  return worst;
}

std::optional<int> Shell::runLine(const std::string& line) {
  auto words = ShellWords::split(line);
  if (!words) {
    err_ << "error: " << words.error().localizedDescription() << '\n' << std::flush;
    return 2;
  }
  if (words->empty()) return 0;
  if (words->size() == 1 && (words->front() == "exit" || words->front() == "quit")) {
    return std::nullopt;
  }
  if (words->size() == 1 && words->front() == "help") *words = {"--help"};
  auto outcome = CommandLine::parseCommand(*words);
  if (!outcome.shouldRun()) {
    (*outcome.exitCode == 0 ? out_ : err_) << outcome.message << std::flush;
    return *outcome.exitCode;
  }
  if (outcome.command.kind == CommandKind::shell) {
    err_ << "error: already in a qvk shell\n" << std::flush;
    return 2;
  }
  return runner_.run(outcome.command);
}

}  // namespace qvk
