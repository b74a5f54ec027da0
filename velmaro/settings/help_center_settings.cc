#include "velmaro/settings/help_center_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<HelpCenterSettings> HelpCenterSettings::decode(
    const boost::json::value& document) {
  HelpCenterSettings settings;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto helpCenter, root.nested("help_center"));
  QUORVEL_ASSIGN_OR_RETURN(settings.helpCenterArticleVotingEnabled_,
                           helpCenter.decodeBool("help_center_article_voting_enabled"));
  QUORVEL_ASSIGN_OR_RETURN(settings.enabled_, helpCenter.decodeBool("enabled"));
  QUORVEL_ASSIGN_OR_RETURN(settings.locale_, helpCenter.decodeString("locale"));
  return settings;
}

}  // namespace velmaro
