#pragma once

#include <memory>
#include <vector>

#include "tools/qvk/command_group.h"

namespace qvk {

// Every group of qvk's commands, fresh for one parse, in the order that
// `qvk --help` lists them. Adding a group is adding its line here.
class CommandGroups {
 public:
  static std::vector<std::unique_ptr<CommandGroup>> all();
};

}  // namespace qvk
