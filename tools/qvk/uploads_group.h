#pragma once

#include <optional>
#include <string>

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk uploads add FILE [--name NAME] [--content-type TYPE]` uploads a file
// (streamed, with a progress bar on a terminal, Ctrl-C cancels with status
// 130) and prints its token; `qvk uploads delete TOKEN` deletes an upload and
// prints the service's status.
class UploadsGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

 private:
  int add(CommandContext& context) const;
  int remove(CommandContext& context) const;

  std::string file_;
  std::optional<std::string> name_;
  std::optional<std::string> contentType_;
  std::string token_;
};

}  // namespace qvk
