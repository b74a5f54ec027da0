#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvel/quorvel.h"

namespace velmaro {

// The library's entry object: binds the library to an initialized core
// object and carries the application's Help Center locale override. Every
// provider that needs the core object reaches it through Support::instance().
class Support {
 public:
  // There is no plain constructor: instances come from initialize().
  Support() = delete;
  Support(const Support&) = delete;
  Support& operator=(const Support&) = delete;

  // With a core object: a new Support (locale override absent) replaces the
  // current one. Without: an error is logged and the current one stays.
  // Registers nothing and sends nothing.
  static void initialize(std::shared_ptr<quorvel::Quorvel> quorvel);
  static void initializeWithQuorvel(std::shared_ptr<quorvel::Quorvel> quorvel) {
    initialize(std::move(quorvel));
  }

  // The current object; before initialize() a warning is logged (on every
  // such read) and nothing returned.
  static std::shared_ptr<Support> instance();

  // The core object passed to initialize(); never changes.
  const std::shared_ptr<quorvel::Quorvel>& quorvel() const { return quorvel_; }

  // When set, the Help Center uses this locale instead of its settings' one.
  std::optional<std::string> helpCenterLocaleOverride() const;
  void setHelpCenterLocaleOverride(std::optional<std::string> locale);

  // The host's signal that request `requestId` has news on the service (a
  // push, typically). Passed, through the current core object's action
  // handler registry, to an open view of that request (true) or to an open
  // request list; with neither, the request is marked unread. False without
  // a current core object. Handlers run synchronously on the caller's thread.
  bool refreshRequest(const std::string& requestId) const;
  bool refreshRequestWithRequestId(const std::string& requestId) const {
    return refreshRequest(requestId);
  }

  // Action names that the user-interface layer registers its handlers under,
  // and the key of the request id it is handed.
  static constexpr const char* kRequestRefreshActionPrefix = "Request_Controller_Refresh_id_";
  static constexpr const char* kRequestListRefreshAction = "Request_List_Refresh";
  static constexpr const char* kRequestIdKey = "request_id";

  // Forgets the instance, so that tests start clean.
  static void resetForTesting();

 private:
  struct Token {};

 public:
  Support(Token, std::shared_ptr<quorvel::Quorvel> quorvel) : quorvel_(std::move(quorvel)) {}

 private:
  const std::shared_ptr<quorvel::Quorvel> quorvel_;
  mutable std::mutex mutex_;
  std::optional<std::string> helpCenterLocaleOverride_;
};

using QVKSupport = Support;

}  // namespace velmaro
