#pragma once

#include <memory>

#include "tools/qvk/command_group.h"
#include "tools/qvk/requests_arguments.h"
#include "velmaro/outbox/request_outbox.h"
#include "velmaro/requests/qvk_request_provider.h"

namespace qvk {

// `qvk requests ...`: the end user's support requests through the request
// provider: list, show, comments, create, comment, and the device's unread
// counters (updates, mark-read, mark-unread). The counters live in the
// request store under --data-dir, so they carry from one qvk process to the
// next. Each command makes its own provider and keeps it until the answer:
// `updates` ends without an answer when its provider is gone.
class RequestsGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

  const RequestsArguments& arguments() const { return arguments_; }

 private:
  void requestId(CLI::App* command);
  void tokens(CLI::App* command);
  void declareReading(CLI::App* requests);
  void declareWriting(CLI::App* requests);
  void declareReadTracking(CLI::App* requests);

  int list(CommandContext& context) const;
  int show(CommandContext& context) const;
  int comments(CommandContext& context) const;
  int create(CommandContext& context) const;
  int comment(CommandContext& context) const;
  int updates(CommandContext& context) const;
  int markRead(CommandContext& context) const;
  int markUnread(CommandContext& context) const;
  int refresh(CommandContext& context) const;
  int outbox(CommandContext& context) const;
  // The provider for create and comment: with --queue-offline it keeps calls
  // in the outbox, after sending what already waits there.
  std::shared_ptr<velmaro::RequestOutbox> outboxFor(CommandContext& context,
                                                    velmaro::QVKRequestProvider& provider) const;

  RequestsArguments arguments_;
};

}  // namespace qvk
