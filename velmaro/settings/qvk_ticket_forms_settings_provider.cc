#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"

#include "velmaro/settings/settings_fetch.h"

namespace velmaro {

void QVKTicketFormsSettingsProvider::getTicketFormsSettings(Callback callback) {
  fetchSettings<TicketFormsSettings>(std::move(callback));
}

}  // namespace velmaro
