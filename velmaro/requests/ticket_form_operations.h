#pragma once

#include <cstdint>
#include <vector>

#include "velmaro/requests/qvk_request_provider_context.h"
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

namespace velmaro {

// Fetching ticket forms with their fields, through the process's form cache.
class TicketFormOperations {
 public:
  using Context = QVKRequestProviderContext;
  using Forms = std::vector<QVKTicketFormsProviderCacher::TicketForm>;

  // At most five ids are asked for. When the cache holds every one the
  // answer comes at once, on this thread, and nothing is sent; otherwise the
  // ticket-forms switch is asked and the forms fetched, in the server's
  // order. No notifications.
  static void getTicketFormWithIds(const Context& ctx, const std::vector<std::int64_t>& ids,
                                   ProviderCallback<Forms> cb);
};

}  // namespace velmaro
