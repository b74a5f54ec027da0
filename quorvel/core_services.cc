#include "quorvel/core_services.h"

#include "quorvel/platform/run_loop.h"

namespace quorvel {

CoreServices::CoreServices(std::string appId, std::string quorvelUrl, std::string clientId,
                           const std::filesystem::path& dataDirectory,
                           std::shared_ptr<platform::MainQueue> mainQueue, TransportLimits limits)
    : appId_(std::move(appId)),
      quorvelUrl_(std::move(quorvelUrl)),
      clientId_(std::move(clientId)),
      mainQueue_(std::move(mainQueue)),
      sessionStore_(std::make_shared<SessionStore>(dataDirectory / "session.sqlite")),
      httpCache_(dataDirectory / "http_cache.sqlite"),
      transport_(limits),
      tokens_(*sessionStore_, transport_, quorvelUrl_),
      executor_(*this) {
  // A host that pumps a RunLoop gets its answers without a thread switch.
  if (auto loop = std::dynamic_pointer_cast<platform::RunLoop>(mainQueue_)) {
    transport_.attach(loop);
  }
}

CoreServices::~CoreServices() {
  transport_.shutdown();
}

std::shared_ptr<const Identity> CoreServices::identity() const {
  std::lock_guard lock(identityMutex_);
  return identity_;
}

void CoreServices::setIdentity(std::shared_ptr<const Identity> identity) {
  std::lock_guard lock(identityMutex_);
  identity_ = std::move(identity);
}

}  // namespace quorvel
