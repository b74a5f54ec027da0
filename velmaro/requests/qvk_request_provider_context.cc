#include "velmaro/requests/qvk_request_provider_context.h"

#include "velmaro/settings/qvk_conversations_settings_provider.h"
#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"

namespace velmaro {

void QVKRequestProviderContext::conversationsEnabled(Gate gate) {
  QVKConversationsSettingsProvider::getConversationsSettingsWithCallback(
      [gate = std::move(gate)](std::optional<ConversationsSettings> settings) {
        gate(settings && settings->enabled());
      });
}

void QVKRequestProviderContext::ticketFormsAvailable(Gate gate) {
  QVKTicketFormsSettingsProvider::getTicketFormsSettingsWithCallback(
      [gate = std::move(gate)](std::optional<TicketFormsSettings> settings) {
        gate(settings && settings->available());
      });
}

}  // namespace velmaro
