#include "quorvel/action_handler_registry.h"

namespace quorvel {

void ActionHandlerRegistry::add(std::string action, std::shared_ptr<ActionHandler> handler) {
  std::lock_guard lock(mutex_);
  handlers_.insert_or_assign(std::move(action), std::move(handler));
}

void ActionHandlerRegistry::add(std::string action, ActionHandler::Function function) {
  add(std::move(action), std::make_shared<ActionHandler>(std::move(function)));
}

void ActionHandlerRegistry::remove(std::string_view action) {
  std::lock_guard lock(mutex_);
  if (const auto it = handlers_.find(action); it != handlers_.end()) handlers_.erase(it);
}

std::shared_ptr<ActionHandler> ActionHandlerRegistry::handler(std::string_view forAction) const {
  std::lock_guard lock(mutex_);
  const auto it = handlers_.find(forAction);
  return it == handlers_.end() ? nullptr : it->second;
}

}  // namespace quorvel
