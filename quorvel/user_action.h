#pragma once

#include <optional>
#include <string>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace quorvel {

// A usage event: the user did something.
struct UserAction {
  std::string version;
  std::string action;
  std::optional<std::string> label;
  std::string channel;
  std::string category;
  std::optional<boost::json::value> value;

  UserAction(std::string version_, std::string action_, std::optional<std::string> label_,
             std::string channel_, std::string category_,
             std::optional<boost::json::value> value_ = std::nullopt)
      : version(std::move(version_)),
        action(std::move(action_)),
        label(std::move(label_)),
        channel(std::move(channel_)),
        category(std::move(category_)),
        value(std::move(value_)) {}

  // {"type":"user_action","version","action","label"?,"channel","category","value"?}
  boost::json::object toJson() const;
};

}  // namespace quorvel
