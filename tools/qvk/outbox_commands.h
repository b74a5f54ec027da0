#pragma once

#include <memory>
#include <optional>

#include "quorvel/platform/error.h"
#include "quorvel/platform/result.h"
#include "tools/qvk/command_context.h"
#include "velmaro/outbox/request_outbox.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace qvk {

// The outbox from the command line: `requests create|comment --queue-offline`
// keep what the service does not get, and `requests outbox` shows what
// waits (sending it first with --send). Each qvk process is a start of the
// application, so every command that opens the outbox first sends what
// waits in it, in order, before its own call.
class OutboxCommands {
 public:
  // The outbox of --data-dir, after sending what waits (bounded by the
  // answer timeout); says on standard error what was sent.
  static std::shared_ptr<velmaro::RequestOutbox> openAndSend(CommandContext& context);
  // When `error` is the outbox's queued outcome: prints it ("queued N"; with
  // --json {"queued": entry}) and gives the exit status 0. Otherwise nothing.
  static std::optional<int> reportQueued(CommandContext& context,
                                         const velmaro::RequestOutbox& outbox,
                                         const quorvel::platform::Error& error);
  // The file at `path` kept in the outbox, as the upload that stands in for
  // it until it is sent; an error when no copy could be kept.
  static quorvel::platform::Result<velmaro::QVKUploadResponse> keptUpload(
      velmaro::RequestOutbox& outbox, const std::string& path);
  // `requests outbox [--send]`: the kept calls, oldest first.
  static int list(CommandContext& context, bool send);
};

}  // namespace qvk
