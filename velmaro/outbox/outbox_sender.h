#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "velmaro/outbox/outbox_entry.h"
#include "velmaro/outbox/request_outbox.h"
#include "velmaro/requests/qvk_request_provider_context.h"

namespace velmaro {

class OutboxStore;

// One sending run of the outbox: takes the sender lease, then, oldest
// first, reads back an unsure call (dropping it when the service has it),
// marks the call as on its way, sends it through the provider's own request
// and removes it once answered. Stops at the first call that cannot go yet,
// releases the lease and answers `done`. Every step runs on the core
// object's main queue; the run keeps itself alive until `done`.
class OutboxSender : public std::enable_shared_from_this<OutboxSender> {
 public:
  using Report = RequestOutbox::Report;
  using Done = std::function<void(Report)>;

  static void start(std::shared_ptr<OutboxStore> store, QVKRequestProviderContext ctx, Done done);

  OutboxSender(std::shared_ptr<OutboxStore> store, QVKRequestProviderContext ctx, Done done)
      : store_(std::move(store)), ctx_(std::move(ctx)), done_(std::move(done)) {}

 private:
  using Error = quorvel::platform::Error;

  void next();
  void readBack(const OutboxEntry& entry);
  void send(const OutboxEntry& entry);
  // Uploads the first kept file the call names and puts the upload's token
  // in its place; false when the call names none.
  bool uploadKeptFile(const OutboxEntry& entry);
  void uploaded(OutboxEntry entry, const std::string& keptToken, std::optional<std::string> token,
                std::optional<Error> error);
  void answered(const OutboxEntry& entry, std::optional<Error> error);
  void stop(std::optional<Error> stoppedBy);

  std::shared_ptr<OutboxStore> store_;
  QVKRequestProviderContext ctx_;
  Done done_;
  Report report_;
};

}  // namespace velmaro
