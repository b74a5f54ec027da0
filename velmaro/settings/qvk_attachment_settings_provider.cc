#include "velmaro/settings/qvk_attachment_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKAttachmentSettingsProvider::getAttachmentSettings(Callback callback) {
  fetchSettings<AttachmentSettings>(std::move(callback));
}

}  // namespace velmaro
