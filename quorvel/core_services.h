#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

#include "quorvel/access_token_manager.h"
#include "quorvel/http_cache.h"
#include "quorvel/http_transport.h"
#include "quorvel/identity.h"
#include "quorvel/platform/main_queue.h"
#include "quorvel/request_executor.h"
#include "quorvel/session_store.h"

namespace quorvel {

// What one Quorvel object runs on: its stores, its transport thread, its
// token exchange and its current identity. ProviderServices reach it through
// AccountDetails while the Quorvel object is alive.
class CoreServices {
 public:
  CoreServices(std::string appId, std::string quorvelUrl, std::string clientId,
               const std::filesystem::path& dataDirectory,
               std::shared_ptr<platform::MainQueue> mainQueue, TransportLimits limits);
  // Shuts the transport down first: its last completions still use the
  // token manager and the executor.
  ~CoreServices();
  CoreServices(const CoreServices&) = delete;
  CoreServices& operator=(const CoreServices&) = delete;

  const std::string& appId() const { return appId_; }
  const std::string& quorvelUrl() const { return quorvelUrl_; }
  const std::string& clientId() const { return clientId_; }
  const std::shared_ptr<platform::MainQueue>& mainQueue() const { return mainQueue_; }

  const std::shared_ptr<SessionStore>& sessionStore() const { return sessionStore_; }
  HttpCache& httpCache() { return httpCache_; }
  HttpTransport& transport() { return transport_; }
  AccessTokenManager& tokens() { return tokens_; }
  RequestExecutor& executor() { return executor_; }

  // Set once, before the first request (see QuorvelOptions::maxStaleAge).
  void setMaxStaleAge(std::chrono::seconds age) { maxStaleAge_ = age; }
  std::chrono::seconds maxStaleAge() const { return maxStaleAge_; }

  std::shared_ptr<const Identity> identity() const;
  void setIdentity(std::shared_ptr<const Identity> identity);

  // Answers everything in flight with the cancelled error.
  void shutdown() { transport_.shutdown(); }

 private:
  std::string appId_;
  std::string quorvelUrl_;
  std::string clientId_;
  std::shared_ptr<platform::MainQueue> mainQueue_;
  std::shared_ptr<SessionStore> sessionStore_;
  HttpCache httpCache_;
  HttpTransport transport_;
  AccessTokenManager tokens_;
  RequestExecutor executor_;
  std::chrono::seconds maxStaleAge_{0};
  mutable std::mutex identityMutex_;
  std::shared_ptr<const Identity> identity_;
};

}  // namespace quorvel
