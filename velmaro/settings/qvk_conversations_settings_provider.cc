#include "velmaro/settings/qvk_conversations_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKConversationsSettingsProvider::getConversationsSettings(Callback callback) {
  fetchSettings<ConversationsSettings>(std::move(callback));
}

}  // namespace velmaro
