#pragma once

#include <functional>
#include <utility>

#include <boost/json/object.hpp>

namespace quorvel {

// Something a user interface registered to be told about an action; called
// with a string-keyed dictionary, synchronously on the caller's thread.
class ActionHandler {
 public:
  using Function = std::function<void(const boost::json::object&)>;

  explicit ActionHandler(Function function) : function_(std::move(function)) {}

  void handle(const boost::json::object& with) const {
    if (function_) function_(with);
  }

 private:
  Function function_;
};

}  // namespace quorvel
