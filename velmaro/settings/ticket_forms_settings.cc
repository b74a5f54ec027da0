#include "velmaro/settings/ticket_forms_settings.h"

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

quorvel::platform::Result<TicketFormsSettings> TicketFormsSettings::decode(
    const boost::json::value& document) {
  TicketFormsSettings settings;
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto support, root.nested("support"));
  QUORVEL_ASSIGN_OR_RETURN(auto forms, support.nested("ticket_forms"));
  QUORVEL_ASSIGN_OR_RETURN(settings.available_, forms.decodeBool("available"));
  return settings;
}

}  // namespace velmaro
