#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "quorvel/account_details.h"
#include "quorvel/action_handler_registry.h"
#include "quorvel/identity.h"
#include "quorvel/provider_module.h"
#include "quorvel/quorvel_options.h"
#include "quorvel/store_module.h"

namespace quorvel {

class CoreServices;

// The core library's top-level object: the account, the user's identity, the
// providers and stores. initialize() makes one and makes it the process-wide
// instance (the last one made wins); it sends nothing on the network.
class Quorvel {
 public:
  static constexpr const char* kAnonymousGuidKey = "quorvel.core.anonymous_guid";

  static std::shared_ptr<Quorvel> initialize(std::string appId, std::string quorvelUrl,
                                             std::string clientId, QuorvelOptions options = {});
  // Nothing before initialize().
  static std::shared_ptr<Quorvel> instance();
  // Shuts the instance down and forgets it, so that tests start clean.
  static void resetForTesting();
  // $XDG_DATA_HOME (or ~/.local/share)/quorvel/<app id>.
  static std::filesystem::path defaultDataDirectory(const std::string& appId);

  // Shuts down.
  ~Quorvel();
  Quorvel(const Quorvel&) = delete;
  Quorvel& operator=(const Quorvel&) = delete;

  // Stops the transport and the blip sender. Every request in flight is
  // answered once, with the cancelled transport error. Idempotent.
  void shutdown();

  std::shared_ptr<const Identity> identity() const;
  // An anonymous identity without a guid gets this device's kept guid (made
  // on first use, kept in the session store and mirrored in the user
  // defaults, from where it comes back when the session store lost it). A
  // different identity drops the kept access token.
  void setIdentity(std::shared_ptr<const Identity> identity);

  const AccountDetails& accountDetails() const { return accountDetails_; }
  const std::string& quorvelUrl() const { return accountDetails_.quorvelUrl(); }
  const ProviderModule& providerModule() const { return providerModule_; }
  const StoreModule& storeModule() const { return storeModule_; }
  ActionHandlerRegistry& actionHandlerRegistry() { return actionHandlerRegistry_; }
  const std::shared_ptr<platform::MainQueue>& mainQueue() const { return mainQueue_; }
  const std::filesystem::path& dataDirectory() const { return dataDirectory_; }

 private:
  struct Parts;
  explicit Quorvel(Parts parts);
  // The kept anonymous guid, made or restored when the session store lacks it.
  std::string keptAnonymousGuid();
  // The user defaults are per program: the key names this data directory.
  std::string guidMirrorKey() const;

  std::shared_ptr<platform::MainQueue> mainQueue_;
  std::filesystem::path dataDirectory_;
  std::shared_ptr<platform::UserDefaults> userDefaults_;
  std::shared_ptr<CoreServices> services_;
  AccountDetails accountDetails_;
  ProviderModule providerModule_;
  StoreModule storeModule_;
  ActionHandlerRegistry actionHandlerRegistry_;
};

// The classic interface's name for the instance.
class QVKClassicQuorvel {
 public:
  QVKClassicQuorvel() = delete;
  static std::shared_ptr<Quorvel> instance() { return Quorvel::instance(); }
};

}  // namespace quorvel
