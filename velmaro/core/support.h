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
