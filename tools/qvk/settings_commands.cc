#include "tools/qvk/settings_commands.h"

#include "tools/qvk/answer.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/settings_view.h"
#include "tools/qvk/table.h"
#include "velmaro/settings/qvk_attachment_settings_provider.h"
#include "velmaro/settings/qvk_contact_us_settings_provider.h"
#include "velmaro/settings/qvk_conversations_settings_provider.h"
#include "velmaro/settings/qvk_help_center_settings_provider.h"
#include "velmaro/settings/qvk_support_settings_provider.h"
#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"

namespace qvk {

template <class Record, class Fetch>
int SettingsCommands::show(Fetch fetch) {
  Answer<Record> answer;
  fetch(answer.valueCallback());
  if (!session_.waitUntil([&] { return answer.arrived(); })) {
    return output_.error(ClientErrors::noAnswer(session_.answerTimeout()));
  }
  if (!answer.value()) return output_.error(ClientErrors::noSettings());
  auto json = SettingsView::toJson(*answer.value());
  if (output_.json()) {
    output_.document(json);
    return 0;
  }
  Table table({{"SETTING", 48}, {"VALUE", 90}}, "setting", "settings");
  for (auto& [name, value] : SettingsView::rows(json)) table.addRow({name, value});
  output_.table(table);
  return 0;
}

int SettingsCommands::run(const std::string& group) {
  using namespace velmaro;
  if (group == "conversations") {
    return show<ConversationsSettings>(&QVKConversationsSettingsProvider::getConversationsSettings);
  }
  if (group == "attachments") {
    return show<AttachmentSettings>(&QVKAttachmentSettingsProvider::getAttachmentSettings);
  }
  if (group == "ticket-forms") {
    return show<TicketFormsSettings>(&QVKTicketFormsSettingsProvider::getTicketFormsSettings);
  }
  if (group == "contact-us") {
    return show<ContactUsSettings>(&QVKContactUsSettingsProvider::getContactUsSettings);
  }
  if (group == "help-center") {
    return show<HelpCenterSettings>(&QVKHelpCenterSettingsProvider::getHelpCenterSettings);
  }
  return show<SupportSettings>(&QVKSupportSettingsProvider::getSupportSettings);
}

}  // namespace qvk
