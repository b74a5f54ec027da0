// Settings from hostile JSON: the core keeps any JSON object as the settings
// document, and every settings record decodes from that whole document, whole
// or not at all.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <boost/json.hpp>

#include "velmaro/settings/attachment_settings.h"
#include "velmaro/settings/contact_us_settings.h"
#include "velmaro/settings/conversations_settings.h"
#include "velmaro/settings/help_center_settings.h"
#include "velmaro/settings/support_settings.h"
#include "velmaro/settings/ticket_forms_settings.h"

namespace {

template <typename Settings>
void decode(const boost::json::value& document) {
  (void)Settings::decode(document);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  boost::system::error_code error;
  const auto document =
      boost::json::parse(std::string_view(reinterpret_cast<const char*>(data), size), error);
  // Like the core: a download that is not an object is no document.
  if (error || !document.is_object()) return 0;
  decode<velmaro::AttachmentSettings>(document);
  decode<velmaro::ContactUsSettings>(document);
  decode<velmaro::ConversationsSettings>(document);
  decode<velmaro::HelpCenterSettings>(document);
  decode<velmaro::TicketFormsSettings>(document);
  decode<velmaro::SupportSettings>(document);
  return 0;
}
