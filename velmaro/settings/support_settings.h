#pragma once

#include <string>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/attachment_settings.h"
#include "velmaro/settings/coding_keys.h"
#include "velmaro/settings/contact_us_settings.h"
#include "velmaro/settings/conversations_settings.h"
#include "velmaro/settings/ticket_forms_settings.h"

namespace velmaro {

// The umbrella record of the request side: its own switches under "support"
// plus the four sub-records, all decoded from the same whole document. It
// decodes whole or not at all.
class SupportSettings {
 public:
  // The page shown behind the referrer logo when the document names none.
  static constexpr const char* kDefaultReferrerUrl =
      "https://www.quorvel.com/support/?utm_source=mobile-sdk&utm_medium=referral";

  enum class Key {
    support,
    neverRequestEmail,
    showClosedRequests,
    showReferrerLogo,
    referrerUrl,
    systemMessage
  };
  static constexpr CodingKeys<Key, 6> kCodingKeys{
      {{{Key::support, "support"},
        {Key::neverRequestEmail, "never_request_email"},
        {Key::showClosedRequests, "show_closed_requests"},
        {Key::showReferrerLogo, "show_referrer_logo"},
        {Key::referrerUrl, "referrer_url"},
        {Key::systemMessage, "system_message"}}}};

  SupportSettings() = default;
  static quorvel::platform::Result<SupportSettings> decode(const boost::json::value& document);
  static SupportSettings defaultValue() { return SupportSettings(); }

  bool neverRequestEmail() const { return neverRequestEmail_; }
  bool showClosedRequests() const { return showClosedRequests_; }
  bool showReferrerLogo() const { return showReferrerLogo_; }
  const std::string& referrerUrl() const { return referrerUrl_; }
  const std::string& systemMessage() const { return systemMessage_; }
  const ConversationsSettings& conversationSettings() const { return conversationSettings_; }
  const AttachmentSettings& attachmentSettings() const { return attachmentSettings_; }
  const TicketFormsSettings& ticketFormsSettings() const { return ticketFormsSettings_; }
  const ContactUsSettings& contactUsSettings() const { return contactUsSettings_; }

 private:
  bool neverRequestEmail_ = true;
  bool showClosedRequests_ = true;
  bool showReferrerLogo_ = false;
  // Empty from the constructor; the default page when a document lacks it.
  std::string referrerUrl_;
  std::string systemMessage_;
  ConversationsSettings conversationSettings_;
  AttachmentSettings attachmentSettings_;
  TicketFormsSettings ticketFormsSettings_;
  ContactUsSettings contactUsSettings_;
};

using QVKSupportSettings = SupportSettings;

}  // namespace velmaro
