// Settings providers and usage events through the core library, against a
// loopback server.
#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_fixture_test.h"
#include "velmaro/blips/help_center_blips.h"
#include "velmaro/blips/request_blips.h"
#include "velmaro/settings/qvk_attachment_settings_provider.h"
#include "velmaro/settings/qvk_contact_us_settings_provider.h"
#include "velmaro/settings/qvk_conversations_settings_provider.h"
#include "velmaro/settings/qvk_help_center_settings_provider.h"
#include "velmaro/settings/qvk_support_settings_provider.h"
#include "velmaro/settings/qvk_ticket_forms_settings_provider.h"
#include "velmaro/util/qvk_bundle_utils.h"

namespace velmaro {
namespace {

constexpr const char* kDocument = R"({
  "support": {"never_request_email": false, "show_closed_requests": true,
              "show_referrer_logo": false, "system_message": "",
              "conversations": {"enabled": true},
              "attachments": {"enabled": true, "max_attachment_size": 2048},
              "ticket_forms": {"available": false},
              "contact_us": {"tags": ["mobile"]}},
  "help_center": {"enabled": true, "locale": "en-us", "help_center_article_voting_enabled": true}
})";

class ThroughTheCoreTest : public quorvel::testing::CoreTest {
 protected:
  void SetUp() override {
    CoreTest::SetUp();
    server_.Get("/api/mobile/sdk/settings/test-app.json",
                [this](const auto&, auto& res) { res.set_content(document_, "application/json"); });
    server_.Post("/api/mobile/sdk/access/anonymous.json", [](const auto&, auto& res) {
      res.set_content(R"({"access_token":"t"})", "application/json");
    });
    server_.Post("/api/mobile/sdk/blips.json",
                 [](const auto&, auto& res) { res.set_content("{}", "application/json"); });
  }

  // Every blip the server received, in order.
  std::vector<boost::json::object> receivedBlips() {
    std::vector<boost::json::object> blips;
    for (const auto& request : server_.seen("/api/mobile/sdk/blips.json")) {
      const auto body = boost::json::parse(request.body);
      for (const auto& blip : body.at("blips").as_array()) {
        blips.push_back(blip.as_object());
      }
    }
    return blips;
  }

  void flush() {
    bool done = false;
    quorvel_->providerModule().blip->flush([&](auto) { done = true; });
    ASSERT_TRUE(waitFor([&] { return done; }));
  }

  quorvel::testing::LoopbackServer server_;
  std::string document_ = kDocument;
};

TEST_F(ThroughTheCoreTest, EveryProviderDeliversItsRecordFromOneDocument) {
  start(server_.url());
  int answers = 0;
  QVKSupportSettingsProvider::getSupportSettings([&](std::optional<SupportSettings> s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_FALSE(s->neverRequestEmail());
    EXPECT_EQ(s->referrerUrl(), SupportSettings::kDefaultReferrerUrl);  // absent from the document
  });
  QVKConversationsSettingsProvider::getConversationsSettings([&](auto s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_TRUE(s->enabled());
  });
  QVKAttachmentSettingsProvider::getAttachmentSettingsWithCallback([&](auto s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_EQ(s->maxAttachmentSize(), 2048);
  });
  QVKTicketFormsSettingsProvider::getTicketFormsSettings([&](auto s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_FALSE(s->available());
  });
  QVKContactUsSettingsProvider::getContactUsSettings([&](auto s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_EQ(s->tags(), std::vector<std::string>{"mobile"});
  });
  QVKHelpCenterSettingsProvider::getHelpCenterSettings([&](auto s) {
    ++answers;
    ASSERT_TRUE(s);
    EXPECT_EQ(s->locale(), "en-us");
  });
  EXPECT_TRUE(waitFor([&] { return answers == 6; }));
}

TEST_F(ThroughTheCoreTest, ARecordThatDoesNotDecodeIsDeliveredAsNothing) {
  document_ = R"({"support": {"conversations": {"enabled": true}}})";  // no help_center at all
  start(server_.url());
  std::optional<std::optional<HelpCenterSettings>> helpCenter;
  std::optional<std::optional<ConversationsSettings>> conversations;
  QVKHelpCenterSettingsProvider::getHelpCenterSettings([&](auto s) { helpCenter = s; });
  QVKConversationsSettingsProvider::getConversationsSettings([&](auto s) { conversations = s; });
  ASSERT_TRUE(waitFor([&] { return helpCenter && conversations; }));
  EXPECT_FALSE(helpCenter->has_value());
  EXPECT_TRUE(conversations->has_value());
}

TEST_F(ThroughTheCoreTest, BeforeInitializationNoProviderEverAnswers) {
  int answers = 0;
  QVKSupportSettingsProvider::getSupportSettings([&](auto) { ++answers; });
  QVKHelpCenterSettingsProvider::getHelpCenterSettings([&](auto) { ++answers; });
  loop_->runFor(std::chrono::milliseconds(50));
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(server_.count("/api/mobile/sdk/settings/test-app.json"), 0U);
  HelpCenterBlips::blipSearchQuery("dropped");  // no core object: dropped silently
}

TEST_F(ThroughTheCoreTest, EventsCarryTheirVocabularyAndPayloads) {
  start(server_.url());
  HelpCenterBlips::blipSearchQuery("reset password");
  HelpCenterBlips::blipArticleVote("4021", -1);
  HelpCenterBlips::blipArticleViewed("Title", "https://h/a/1", "en-US", 77, "en-us");
  RequestBlips::requestCreatedBlip("12");
  RequestBlips::requestUpdateBlip("12");
  flush();

  const auto blips = receivedBlips();
  ASSERT_EQ(blips.size(), 5U);
  const std::string version = QVKBundleUtils::sdkVersion();
  for (const auto& blip : blips) {
    EXPECT_EQ(blip.at("channel"), "dravik");
    EXPECT_EQ(blip.at("version"), boost::json::value(version));
  }
  EXPECT_EQ(blips[0].at("action"), "search");
  EXPECT_EQ(blips[0].at("label"), "helpCenterForm");
  EXPECT_EQ(blips[0].at("category"), "Dravik");
  EXPECT_EQ(blips[0].at("group"), "pathfinder");
  EXPECT_EQ(boost::json::serialize(blips[0].at("value")), R"({"query":"reset password"})");

  EXPECT_EQ(blips[1].at("action"), "articleVote");
  EXPECT_FALSE(blips[1].contains("label"));
  EXPECT_EQ(blips[1].at("group"), "behavioural");
  EXPECT_EQ(blips[1].at("value").at("articleId"), 4021);
  EXPECT_EQ(blips[1].at("value").at("vote"), -1);

  EXPECT_EQ(blips[2].at("type"), "page_view");
  EXPECT_EQ(blips[2].at("page_id"), 77);
  EXPECT_EQ(blips[2].at("group"), "pathfinder");

  EXPECT_EQ(blips[3].at("action"), "requestCreated");
  EXPECT_EQ(boost::json::serialize(blips[3].at("value")), R"({"requestId":"12"})");
  EXPECT_EQ(blips[4].at("action"), "requestUpdated");
}

TEST_F(ThroughTheCoreTest, AnArticleVoteIsSentOnlyForASignedDecimalId) {
  start(server_.url());
  struct Case {
    const char* text;
    std::optional<std::int64_t> sent;
  };
  const Case cases[] = {
      {"4021", 4021},          {"+4021", 4021},       {"-7", -7},
      {"abc", std::nullopt},   {"", std::nullopt},    {" 4021", std::nullopt},
      {"4021x", std::nullopt}, {"+-1", std::nullopt}, {"9223372036854775808", std::nullopt},
  };
  std::vector<std::int64_t> expected;
  for (const auto& c : cases) {
    HelpCenterBlips::blipArticleVote(c.text, 1);
    if (c.sent) expected.push_back(*c.sent);
  }
  flush();
  std::vector<std::int64_t> sent;
  for (const auto& blip : receivedBlips())
    sent.push_back(blip.at("value").at("articleId").to_number<std::int64_t>());
  EXPECT_EQ(sent, expected);
}

}  // namespace
}  // namespace velmaro
