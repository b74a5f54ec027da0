#pragma once

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk network [--watch]`: whether the network can be reached now, and by
// which kind of link, as QVKReachability sees it; with --watch, one line per
// change until SIGINT (exit status 130). With --json each line is one object.
class NetworkGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

 private:
  int show(CommandContext& context) const;

  bool watch_ = false;
};

}  // namespace qvk
