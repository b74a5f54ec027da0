#pragma once

#include <string>

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk settings [GROUP]`: asks the matching settings provider and prints the
// record's properties. No record (the download failed and nothing was kept,
// or the document did not decode) is an error.
class SettingsGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

  // support, conversations, attachments, ticket-forms, contact-us or help-center.
  const std::string& settingsGroup() const { return settingsGroup_; }

 private:
  int show(CommandContext& context) const;

  std::string settingsGroup_ = "support";
};

}  // namespace qvk
