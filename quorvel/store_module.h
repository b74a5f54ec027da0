#pragma once

#include <memory>

#include "quorvel/session_store.h"

namespace quorvel {

class CoreServices;

// The stores of a Quorvel object.
class StoreModule {
 public:
  StoreModule(std::shared_ptr<SessionStore> sessionStore, std::weak_ptr<CoreServices> services)
      : sessionStore(std::move(sessionStore)), services_(std::move(services)) {}

  std::shared_ptr<SessionStore> sessionStore;

  // Forgets the kept settings document, the access token and the cached
  // HTTP answers. The anonymous user's guid stays: it names this device's
  // user, not a session.
  void clearSettingsAndSession() const;

 private:
  std::weak_ptr<CoreServices> services_;
};

}  // namespace quorvel
