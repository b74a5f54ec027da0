#pragma once

#include <functional>
#include <string>

#include "tools/qvk/command_context.h"

namespace CLI {
class App;
}

namespace qvk {

// A group of qvk's commands (`qvk hc ...`, `qvk settings`, `qvk shell`). It
// declares its commands on the command line with their arguments and options
// bound straight into its own members, so that after a parse the group holds
// what was given, and runs the command that was. One group is one file pair
// and one line in CommandGroups.
class CommandGroup {
 public:
  virtual ~CommandGroup() = default;
  CommandGroup(const CommandGroup&) = delete;
  CommandGroup& operator=(const CommandGroup&) = delete;

  // Adds the group's commands under `root`: qvk itself, or a line of `qvk shell`.
  virtual void declare(CLI::App& root) = 0;
  // Whether the group's commands may be given on a line of `qvk shell`.
  virtual bool inShell() const { return true; }

  // After a parse: the command that was given ("hc article"), or empty when
  // it was none of this group's.
  const std::string& given() const { return given_; }
  // Runs the given command; returns its exit status.
  int run(CommandContext& context) const { return action_(context); }

 protected:
  CommandGroup() = default;

  using Action = std::function<int(CommandContext&)>;

  // Adds the command `name` under `parent`; when the command line gives it,
  // run() does `action`.
  CLI::App* command(CLI::App* parent, const std::string& name, const std::string& description,
                    Action action);

  // The same with a member function of the group as the action.
  template <class Group>
  CLI::App* command(CLI::App* parent, const std::string& name, const std::string& description,
                    int (Group::*action)(CommandContext&) const) {
    const auto* group = static_cast<const Group*>(this);
    return command(parent, name, description,
                   [group, action](CommandContext& context) { return (group->*action)(context); });
  }

 private:
  std::string given_;
  Action action_;
};

}  // namespace qvk
