#include "velmaro/settings/qvk_contact_us_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKContactUsSettingsProvider::getContactUsSettings(Callback callback) {
  fetchSettings<ContactUsSettings>(std::move(callback));
}

}  // namespace velmaro
