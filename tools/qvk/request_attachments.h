#pragma once

#include <optional>
#include <vector>

#include "tools/qvk/command_context.h"
#include "tools/qvk/requests_arguments.h"
#include "velmaro/outbox/request_outbox.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace qvk {

// What --attach and --token give `requests create` and `requests comment`:
// every --attach file uploaded first, in order, then every --token; absent
// when neither was given. With an outbox, a file whose upload did not reach
// the service is kept there, to be uploaded before the call that names it.
class RequestAttachments {
 public:
  struct Collected {
    std::optional<std::vector<velmaro::QVKUploadResponse>> uploads;
    // When an upload fails or the user cancels it: the status to end the
    // command with instead.
    std::optional<int> failed;
  };

  static Collected collect(CommandContext& context, const RequestsArguments& arguments,
                           velmaro::RequestOutbox* outbox);
};

}  // namespace qvk
