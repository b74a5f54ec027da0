// The core library and the support library initialized against a real
// qvk-emulator: every settings record fetched and decoded from its document.
#include <filesystem>
#include <random>

#include <gtest/gtest.h>

#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "tests/emulator_process.h"
#include "velmaro/core/support.h"
#include "velmaro/settings/qvk_attachment_settings_provider.h"
#include "velmaro/settings/qvk_contact_us_settings_provider.h"
#include "velmaro/settings/qvk_conversations_settings_provider.h"
#include "velmaro/settings/qvk_help_center_settings_provider.h"
#include "velmaro/settings/qvk_support_settings_provider.h"
#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"

namespace velmaro {
namespace {

TEST(SettingsAgainstEmulatorTest, EveryRecordDecodesFromTheServedDocument) {
  testing::EmulatorProcess emulator(
      QVK_EMULATOR_PATH, {"--conversations", "on", "--attachments", "off", "--voting", "on",
                          "--hc-locale", "de", "--contact-us-tags", "ios,app"});
  ASSERT_TRUE(emulator.running()) << emulator.error();
  const auto dataDirectory = std::filesystem::temp_directory_path() /
                             ("velmaro-settings-it-" + std::to_string(std::random_device{}()));
  auto loop = std::make_shared<quorvel::platform::RunLoop>();
  quorvel::QuorvelOptions options;
  options.mainQueue = loop;
  options.dataDirectory = dataDirectory;
  options.logLevel = quorvel::LogLevel::off;
  auto core = quorvel::Quorvel::initialize("it-app", emulator.url(), "it-client", options);
  Support::initialize(core);

  std::optional<SupportSettings> support;
  std::optional<ConversationsSettings> conversations;
  std::optional<AttachmentSettings> attachments;
  std::optional<TicketFormsSettings> ticketForms;
  std::optional<ContactUsSettings> contactUs;
  std::optional<HelpCenterSettings> helpCenter;
  int answers = 0;
  QVKSupportSettingsProvider::getSupportSettings([&](auto s) { support = s, ++answers; });
  QVKConversationsSettingsProvider::getConversationsSettings(
      [&](auto s) { conversations = s, ++answers; });
  QVKAttachmentSettingsProvider::getAttachmentSettings([&](auto s) { attachments = s, ++answers; });
  QVKTicketFormsSettingsProvider::getTicketFormsSettings(
      [&](auto s) { ticketForms = s, ++answers; });
  QVKContactUsSettingsProvider::getContactUsSettings([&](auto s) { contactUs = s, ++answers; });
  QVKHelpCenterSettingsProvider::getHelpCenterSettings([&](auto s) { helpCenter = s, ++answers; });
  ASSERT_TRUE(loop->runUntil([&] { return answers == 6; }, std::chrono::seconds(10)));

  ASSERT_TRUE(support && conversations && attachments && ticketForms && contactUs && helpCenter);
  EXPECT_TRUE(conversations->enabled());
  EXPECT_TRUE(support->conversationSettings().enabled());
  EXPECT_FALSE(attachments->enabled());
  EXPECT_EQ(contactUs->tags(), (std::vector<std::string>{"ios", "app"}));
  EXPECT_EQ(support->contactUsSettings().tags(), contactUs->tags());
  EXPECT_TRUE(helpCenter->helpCenterArticleVotingEnabled());
  EXPECT_EQ(helpCenter->locale(), "de");
  EXPECT_FALSE(support->referrerUrl().empty());

  core->shutdown();
  loop->runPending();
  Support::resetForTesting();
  quorvel::Quorvel::resetForTesting();
  std::filesystem::remove_all(dataDirectory);
}

}  // namespace
}  // namespace velmaro
