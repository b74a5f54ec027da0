#include "velmaro/settings/qvk_help_center_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKHelpCenterSettingsProvider::getHelpCenterSettings(Callback callback) {
  fetchSettings<HelpCenterSettings>(std::move(callback));
}

}  // namespace velmaro
