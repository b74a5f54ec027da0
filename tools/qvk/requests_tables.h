#pragma once

#include <optional>
#include <vector>

#include "tools/qvk/table.h"
#include "velmaro/requests/qvk_comment_with_user.h"
#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/request_updates.h"
#include "velmaro/ticketforms/qvk_ticket_form.h"

namespace qvk {

// The tables of the `requests` and `forms` commands: the columns a reader
// scans; --json has every property.
class RequestsTables {
 public:
  // The unread mark comes from the device's counters (`updates`), which the
  // list itself has just refreshed; without them the column stays blank.
  static Table of(const std::vector<velmaro::QVKRequest>& requests,
                  const std::optional<velmaro::RequestUpdates>& updates);
  static Table of(const std::vector<velmaro::QVKCommentWithUser>& comments);
  static Table of(const velmaro::RequestUpdates& updates);
  // A form's fields: type code, title, required, option names.
  static Table fields(const velmaro::QVKTicketForm& form);
  // A raw form or field value as text: a string as it is, anything else as JSON.
  static std::string rawText(const std::optional<boost::json::value>& value);
};

}  // namespace qvk
