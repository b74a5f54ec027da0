#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "velmaro/requests/qvk_create_request.h"

namespace velmaro {

class Support;

// Where the request provider takes the custom fields and the ticket form of a
// create request from. Both answer the request's own values; the support
// configuration is accepted and not consulted, so that a host can later
// derive either from configuration without the provider changing.
class QVKCreateRequestUtilities {
 public:
  static std::vector<CustomField> customTicketFieldsWithConfig(const Support* config,
                                                               const QVKCreateRequest& request);
  static std::optional<std::int64_t> ticketFormIdWithConfig(const Support* config,
                                                            const QVKCreateRequest& request);
};

}  // namespace velmaro
