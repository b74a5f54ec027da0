// The settings records decoded from the service's settings document.
#include <functional>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/settings/help_center_settings.h"
#include "velmaro/settings/support_settings.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {
namespace {

boost::json::value fullDocument() {
  return boost::json::parse(R"({
    "support": {
      "never_request_email": false,
      "show_closed_requests": false,
      "show_referrer_logo": true,
      "referrer_url": "https://example.test/ref",
      "system_message": "We are closed on Sunday.",
      "conversations": {"enabled": true},
      "attachments": {"enabled": true, "max_attachment_size": 1024},
      "ticket_forms": {"available": true},
      "contact_us": {"tags": ["ios", "app"]},
      "unknown_key": 1
    },
    "help_center": {"enabled": true, "locale": "de", "help_center_article_voting_enabled": true}
  })");
}

TEST(SettingsRecordsTest, AFullDocumentDecodesEveryRecord) {
  const auto doc = fullDocument();
  auto support = SupportSettings::decode(doc);
  ASSERT_TRUE(support.ok()) << support.error().localizedDescription();
  EXPECT_FALSE(support->neverRequestEmail());
  EXPECT_FALSE(support->showClosedRequests());
  EXPECT_TRUE(support->showReferrerLogo());
  EXPECT_EQ(support->referrerUrl(), "https://example.test/ref");
  EXPECT_EQ(support->systemMessage(), "We are closed on Sunday.");
  EXPECT_TRUE(support->conversationSettings().enabled());
  EXPECT_TRUE(support->attachmentSettings().enabled());
  EXPECT_EQ(support->attachmentSettings().maxAttachmentSize(), 1024);  // bytes, unscaled
  EXPECT_TRUE(support->ticketFormsSettings().available());
  EXPECT_EQ(support->contactUsSettings().tags(), (std::vector<std::string>{"ios", "app"}));

  auto hc = HelpCenterSettings::decode(doc);
  ASSERT_TRUE(hc.ok());
  EXPECT_TRUE(hc->enabled());
  EXPECT_TRUE(hc->helpCenterArticleVotingEnabled());
  EXPECT_EQ(hc->locale(), "de");
}

TEST(SettingsRecordsTest, DefaultsFromTheConstructor) {
  const auto s = SupportSettings::defaultValue();
  EXPECT_TRUE(s.neverRequestEmail());
  EXPECT_TRUE(s.showClosedRequests());
  EXPECT_FALSE(s.showReferrerLogo());
  EXPECT_EQ(s.referrerUrl(), "");  // not the default page: that is for decoding only
  EXPECT_EQ(s.systemMessage(), "");
  EXPECT_FALSE(s.conversationSettings().enabled());
  EXPECT_EQ(s.attachmentSettings().maxAttachmentSize(), 0);
  EXPECT_TRUE(s.contactUsSettings().tags().empty());
  const auto hc = HelpCenterSettings::defaultValue();
  EXPECT_FALSE(hc.enabled());
  EXPECT_FALSE(hc.helpCenterArticleVotingEnabled());
  EXPECT_EQ(hc.locale(), "");
}

TEST(SettingsRecordsTest, AMissingReferrerUrlDecodesAsTheDefaultPage) {
  auto doc = fullDocument();
  doc.at("support").as_object().erase("referrer_url");
  auto s = SupportSettings::decode(doc);
  ASSERT_TRUE(s.ok());
  EXPECT_EQ(s->referrerUrl(), SupportSettings::kDefaultReferrerUrl);
}

struct FailureCase {
  const char* label;
  std::function<void(boost::json::value&)> edit;
  bool supportFails;
  bool helpCenterFails;
  long code;
};

TEST(SettingsRecordsTest, AFailingReadFailsTheWholeRecordAndOnlyThatRecord) {
  using K = KeyedDecodingContainer;
  auto support = [](boost::json::value& d) -> boost::json::object& {
    return d.at("support").as_object();
  };
  const FailureCase cases[] = {
      {"system_message missing", [&](auto& d) { support(d).erase("system_message"); }, true, false,
       K::kKeyNotFound},
      {"tags missing", [&](auto& d) { support(d)["contact_us"].as_object().erase("tags"); }, true,
       false, K::kKeyNotFound},
      {"conversations object missing", [&](auto& d) { support(d).erase("conversations"); }, true,
       false, K::kKeyNotFound},
      {"boolean given as a string", [&](auto& d) { support(d)["show_referrer_logo"] = "yes"; },
       true, false, K::kTypeMismatch},
      {"size with a fraction",
       [&](auto& d) { support(d)["attachments"].as_object()["max_attachment_size"] = 10.5; }, true,
       false, K::kTypeMismatch},
      {"null system message", [&](auto& d) { support(d)["system_message"] = nullptr; }, true, false,
       K::kValueNotFound},
      {"help_center missing", [](auto& d) { d.as_object().erase("help_center"); }, false, true,
       K::kKeyNotFound},
      {"locale not a string", [](auto& d) { d.at("help_center").as_object()["locale"] = 5; }, false,
       true, K::kTypeMismatch},
  };
  for (const auto& c : cases) {
    auto doc = fullDocument();
    c.edit(doc);
    auto s = SupportSettings::decode(doc);
    auto hc = HelpCenterSettings::decode(doc);
    EXPECT_EQ(!s.ok(), c.supportFails) << c.label;
    EXPECT_EQ(!hc.ok(), c.helpCenterFails) << c.label;
    const quorvel::platform::Error* error =
        !s.ok() ? &s.error() : (!hc.ok() ? &hc.error() : nullptr);
    ASSERT_NE(error, nullptr) << c.label;
    EXPECT_EQ(error->domain, K::kErrorDomain) << c.label;
    EXPECT_EQ(error->code, c.code) << c.label;
  }
}

TEST(SettingsRecordsTest, EmptyTagListAndIntegralDoubleSize) {
  auto doc = fullDocument();
  doc.at("support").at("contact_us").as_object()["tags"] = boost::json::array{};
  doc.at("support").at("attachments").as_object()["max_attachment_size"] = 2048.0;
  auto s = SupportSettings::decode(doc);
  ASSERT_TRUE(s.ok());
  EXPECT_TRUE(s->contactUsSettings().tags().empty());
  EXPECT_EQ(s->attachmentSettings().maxAttachmentSize(), 2048);
}

}  // namespace
}  // namespace velmaro
