#include "velmaro/settings/support_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<SupportSettings> SupportSettings::decode(
    const boost::json::value& document) {
  SupportSettings s;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto support, root.nested("support"));
  QUORVEL_ASSIGN_OR_RETURN(s.neverRequestEmail_, support.decodeBool("never_request_email"));
  QUORVEL_ASSIGN_OR_RETURN(s.showClosedRequests_, support.decodeBool("show_closed_requests"));
  QUORVEL_ASSIGN_OR_RETURN(s.showReferrerLogo_, support.decodeBool("show_referrer_logo"));
  QUORVEL_ASSIGN_OR_RETURN(auto referrer, support.decodeStringIfPresent("referrer_url"));
  s.referrerUrl_ = referrer.value_or(kDefaultReferrerUrl);
  QUORVEL_ASSIGN_OR_RETURN(s.systemMessage_, support.decodeString("system_message"));
  QUORVEL_ASSIGN_OR_RETURN(s.conversationSettings_, ConversationsSettings::decode(document));
  QUORVEL_ASSIGN_OR_RETURN(s.attachmentSettings_, AttachmentSettings::decode(document));
  QUORVEL_ASSIGN_OR_RETURN(s.ticketFormsSettings_, TicketFormsSettings::decode(document));
  QUORVEL_ASSIGN_OR_RETURN(s.contactUsSettings_, ContactUsSettings::decode(document));
  return s;
}

}  // namespace velmaro
