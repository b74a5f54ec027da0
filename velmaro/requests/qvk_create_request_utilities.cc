#include "velmaro/requests/qvk_create_request_utilities.h"

namespace velmaro {

std::vector<CustomField> QVKCreateRequestUtilities::customTicketFieldsWithConfig(
    const Support* /*config*/, const QVKCreateRequest& request) {
  return request.customFields;
}

std::optional<std::int64_t> QVKCreateRequestUtilities::ticketFormIdWithConfig(
    const Support* /*config*/, const QVKCreateRequest& request) {
  return request.ticketFormId;
}

}  // namespace velmaro
