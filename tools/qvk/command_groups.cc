#include "tools/qvk/command_groups.h"

#include "tools/qvk/attachments_group.h"
#include "tools/qvk/hc_group.h"
#include "tools/qvk/settings_group.h"
#include "tools/qvk/shell_group.h"
#include "tools/qvk/uploads_group.h"

namespace qvk {

std::vector<std::unique_ptr<CommandGroup>> CommandGroups::all() {
  std::vector<std::unique_ptr<CommandGroup>> groups;
  groups.push_back(std::make_unique<HcGroup>());
  groups.push_back(std::make_unique<SettingsGroup>());
  groups.push_back(std::make_unique<ShellGroup>());
  groups.push_back(std::make_unique<UploadsGroup>());
  groups.push_back(std::make_unique<AttachmentsGroup>());
  return groups;
}

}  // namespace qvk
