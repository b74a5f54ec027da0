#pragma once

#include <cstdint>
#include <vector>

#include "tools/qvk/command_group.h"

namespace qvk {

// `qvk forms ID [ID...]`: the ticket forms with these ids, each with its
// fields. The provider keeps the forms it fetched for the life of the
// process, so in `qvk shell` a second ask for the same ids is answered
// without a request.
class FormsGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

  const std::vector<std::int64_t>& formIds() const { return formIds_; }

 private:
  int show(CommandContext& context) const;

  std::vector<std::int64_t> formIds_;
};

}  // namespace qvk
