#include "tools/qvk/command_group.h"

#include <utility>

#include <CLI/CLI.hpp>

namespace qvk {

CLI::App* CommandGroup::command(CLI::App* parent, const std::string& name,
                                const std::string& description, Action action) {
  // The full name, without the program: "hc article".
  std::string fullName = name;
  for (auto* app = parent; app->get_parent() != nullptr; app = app->get_parent()) {
    fullName = app->get_name() + " " + fullName;
  }
  auto* app = parent->add_subcommand(name, description);
  // CLI11 calls this only once the whole command line parsed and validated.
  app->callback([this, fullName = std::move(fullName), action = std::move(action)] {
    given_ = fullName;
    action_ = action;
  });
  return app;
}

}  // namespace qvk
