#include "velmaro/settings/contact_us_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<ContactUsSettings> ContactUsSettings::decode(
    const boost::json::value& document) {
  ContactUsSettings settings;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto support, root.nested("support"));
  QUORVEL_ASSIGN_OR_RETURN(auto contactUs, support.nested("contact_us"));
  QUORVEL_ASSIGN_OR_RETURN(settings.tags_, contactUs.decodeStringArray("tags"));
  return settings;
}

}  // namespace velmaro
