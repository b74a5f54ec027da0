// qvk: the support library's operations from the command line.
#include <iostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "tools/qvk/command_line.h"
#include "tools/qvk/program.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  auto parsed = qvk::CommandLine::parse(args, qvk::CommandLine::processEnvironment());
  if (!parsed.shouldRun()) {
    (*parsed.exitCode == 0 ? std::cout : std::cerr) << parsed.message << std::flush;
    return *parsed.exitCode;
  }
  return qvk::Program::run(parsed, STDIN_FILENO, std::cout, std::cerr, isatty(STDIN_FILENO) == 1);
}
