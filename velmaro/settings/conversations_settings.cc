#include "velmaro/settings/conversations_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<ConversationsSettings> ConversationsSettings::decode(
    const boost::json::value& document) {
  ConversationsSettings settings;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto support, root.nested("support"));
  QUORVEL_ASSIGN_OR_RETURN(auto conversations, support.nested("conversations"));
  QUORVEL_ASSIGN_OR_RETURN(settings.enabled_, conversations.decodeBool("enabled"));
  return settings;
}

}  // namespace velmaro
