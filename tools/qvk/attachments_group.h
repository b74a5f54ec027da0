#pragma once

#include <optional>
#include <string>

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk attachments get URL [-o FILE]` downloads an attachment: into FILE
// (complete or not at all; a progress bar on a terminal, Ctrl-C cancels with
// status 130), else its bytes to standard output (with --json, their size).
// `qvk attachments avatar URL` downloads and decodes an avatar and prints its
// dimensions.
class AttachmentsGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

 private:
  int get(CommandContext& context) const;
  int avatar(CommandContext& context) const;
  int saveTo(CommandContext& context, const std::string& path) const;

  std::string url_;
  std::optional<std::string> output_;
};

}  // namespace qvk
