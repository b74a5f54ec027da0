#include "tools/qvk/settings_group.h"

#include <CLI/CLI.hpp>

#include "tools/qvk/library_call.h"
#include "tools/qvk/settings_view.h"
#include "tools/qvk/table.h"
#include "velmaro/settings/qvk_attachment_settings_provider.h"
#include "velmaro/settings/qvk_contact_us_settings_provider.h"
#include "velmaro/settings/qvk_conversations_settings_provider.h"
#include "velmaro/settings/qvk_help_center_settings_provider.h"
#include "velmaro/settings/qvk_support_settings_provider.h"
#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"

namespace qvk {

namespace {

template <class Record>
int print(CommandContext& context, const LibraryCall::StartForValue<Record>& fetch) {
  auto record = LibraryCall::awaitSettings<Record>(context.session, fetch);
  if (!record) return context.output.error(record.error());
  auto json = SettingsView::toJson(*record);
  if (context.output.json()) {
    context.output.document(json);
    return 0;
  }
  Table table({{"SETTING", 48}, {"VALUE", 90}}, "setting", "settings");
  for (auto& [name, value] : SettingsView::rows(json)) table.addRow({name, value});
  context.output.table(table);
  return 0;
}

}  // namespace

void SettingsGroup::declare(CLI::App& root) {
  command(&root, "settings", "Show the service's settings for this app", &SettingsGroup::show)
      ->add_option("GROUP", settingsGroup_,
                   "support (default), conversations, attachments, ticket-forms, contact-us or "
                   "help-center")
      ->check(CLI::IsMember({"support", "conversations", "attachments", "ticket-forms",
                             "contact-us", "help-center"}));
}

int SettingsGroup::show(CommandContext& context) const {
  using namespace velmaro;
  if (settingsGroup_ == "conversations") {
    return print<ConversationsSettings>(
        context, &QVKConversationsSettingsProvider::getConversationsSettings);
  }
  if (settingsGroup_ == "attachments") {
    return print<AttachmentSettings>(context,
                                     &QVKAttachmentSettingsProvider::getAttachmentSettings);
  }
  if (settingsGroup_ == "ticket-forms") {
    return print<TicketFormsSettings>(context,
                                      &QVKTicketFormsSettingsProvider::getTicketFormsSettings);
  }
  if (settingsGroup_ == "contact-us") {
    return print<ContactUsSettings>(context, &QVKContactUsSettingsProvider::getContactUsSettings);
  }
  if (settingsGroup_ == "help-center") {
    return print<HelpCenterSettings>(context,
                                     &QVKHelpCenterSettingsProvider::getHelpCenterSettings);
  }
  return print<SupportSettings>(context, &QVKSupportSettingsProvider::getSupportSettings);
}

}  // namespace qvk
