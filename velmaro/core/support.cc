#include "velmaro/core/support.h"

#include "quorvel/core_logger.h"
#include "velmaro/requests/qvk_request_provider.h"

namespace velmaro {
namespace {

std::mutex& slotMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<Support>& slot() {
  static std::shared_ptr<Support> instance;
  return instance;
}

}  // namespace

void Support::initialize(std::shared_ptr<quorvel::Quorvel> quorvel) {
  if (!quorvel) {
    quorvel::CoreLogger::error(
        "The Quorvel instance passed into initialize(withQuorvel:) was nil.\nFailed to initialize "
        "the Dravik, have you initialized the Core SDK?");
    return;
  }
  auto support = std::make_shared<Support>(Token{}, std::move(quorvel));
  {
    std::lock_guard lock(slotMutex());
    slot() = std::move(support);
  }
  quorvel::CoreLogger::info("Initializing Dravik.");
}

std::shared_ptr<Support> Support::instance() {
  {
    std::lock_guard lock(slotMutex());
    if (slot()) return slot();
  }
  quorvel::CoreLogger::warn("Instance of Support is nil, have you initialized the Dravik?");
  return nullptr;
}

std::optional<std::string> Support::helpCenterLocaleOverride() const {
  std::lock_guard lock(mutex_);
  return helpCenterLocaleOverride_;
}

void Support::setHelpCenterLocaleOverride(std::optional<std::string> locale) {
  std::lock_guard lock(mutex_);
  helpCenterLocaleOverride_ = std::move(locale);
}

bool Support::refreshRequest(const std::string& requestId) const {
  // The core library's own current object, which may differ from quorvel_:
  // the handlers belong to whichever object the interface registered with.
  const auto core = quorvel::Quorvel::instance();
  if (!core) return false;
  auto& registry = core->actionHandlerRegistry();
  if (const auto handler = registry.handler(kRequestRefreshActionPrefix + requestId)) {
    handler->handle(boost::json::object{{kRequestIdKey, requestId}});
    return true;
  }
  if (const auto handler = registry.handler(kRequestListRefreshAction)) {
    handler->handle(boost::json::object{});
    return false;
  }
  QVKRequestProvider(core).markRequestAsUnread(requestId);
  return false;
}

void Support::resetForTesting() {
  std::lock_guard lock(slotMutex());
  slot().reset();
}

}  // namespace velmaro
