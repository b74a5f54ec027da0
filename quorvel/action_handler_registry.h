#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "quorvel/action_handler.h"

namespace quorvel {

// Action names to handlers. The last handler added for a name wins. Safe
// from any thread.
class ActionHandlerRegistry {
 public:
  void add(std::string action, std::shared_ptr<ActionHandler> handler);
  void add(std::string action, ActionHandler::Function function);
  void remove(std::string_view action);
  std::shared_ptr<ActionHandler> handler(std::string_view forAction) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<ActionHandler>, std::less<>> handlers_;
};

}  // namespace quorvel
