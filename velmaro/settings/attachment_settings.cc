#include "velmaro/settings/attachment_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<AttachmentSettings> AttachmentSettings::decode(
    const boost::json::value& document) {
  AttachmentSettings settings;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto support, root.nested("support"));
  QUORVEL_ASSIGN_OR_RETURN(auto attachments, support.nested("attachments"));
  QUORVEL_ASSIGN_OR_RETURN(settings.enabled_, attachments.decodeBool("enabled"));
  QUORVEL_ASSIGN_OR_RETURN(settings.maxAttachmentSize_,
                           attachments.decodeInt64("max_attachment_size"));
  return settings;
}

}  // namespace velmaro
