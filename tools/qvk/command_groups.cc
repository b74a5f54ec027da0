#include "tools/qvk/command_groups.h"

#include "tools/qvk/attachments_group.h"
#include "tools/qvk/forms_group.h"
#include "tools/qvk/hc_group.h"
#include "tools/qvk/network_group.h"
#include "tools/qvk/requests_group.h"
#include "tools/qvk/settings_group.h"
#include "tools/qvk/shell_group.h"
#include "tools/qvk/uploads_group.h"

namespace qvk {

std::vector<std::unique_ptr<CommandGroup>> CommandGroups::all() {
  std::vector<std::unique_ptr<CommandGroup>> groups;
  groups.push_back(std::make_unique<HcGroup>());
  groups.push_back(std::make_unique<RequestsGroup>());
  groups.push_back(std::make_unique<FormsGroup>());
  groups.push_back(std::make_unique<UploadsGroup>());
  groups.push_back(std::make_unique<AttachmentsGroup>());
  groups.push_back(std::make_unique<SettingsGroup>());
  groups.push_back(std::make_unique<NetworkGroup>());
  groups.push_back(std::make_unique<ShellGroup>());
  return groups;
}

}  // namespace qvk
