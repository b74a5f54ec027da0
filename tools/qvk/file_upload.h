#pragma once

#include <optional>
#include <string>

#include "quorvel/platform/result.h"
#include "tools/qvk/command_context.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace qvk {

// Uploads one file for a request or a comment (`qvk uploads add`, and
// `--attach` of `qvk requests create|comment`): the account's attachment
// size limit is checked first, the file is streamed from disk with a
// progress bar, and Ctrl-C cancels it.
class FileUpload {
 public:
  struct Outcome {
    quorvel::platform::Result<velmaro::QVKUploadResponse> answer;
    bool interrupted = false;  // the user cancelled it with Ctrl-C
  };

  // The file's content type by its extension; application/octet-stream for
  // any other.
  static std::string contentTypeFor(const std::string& path);

  // `name` defaults to the file's own name, `contentType` to contentTypeFor().
  static Outcome upload(CommandContext& context, const std::string& path,
                        const std::optional<std::string>& name,
                        const std::optional<std::string>& contentType);
};

}  // namespace qvk
