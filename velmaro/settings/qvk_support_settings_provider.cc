#include "velmaro/settings/qvk_support_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKSupportSettingsProvider::getSupportSettings(Callback callback) {
  fetchSettings<SupportSettings>(std::move(callback));
}

}  // namespace velmaro
