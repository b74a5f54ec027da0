#include "quorvel/user_action.h"

namespace quorvel {

boost::json::object UserAction::toJson() const {
  boost::json::object json;
  json["type"] = "user_action";
  json["version"] = version;
  json["action"] = action;
  if (label) json["label"] = *label;
  json["channel"] = channel;
  json["category"] = category;
  if (value) json["value"] = *value;
  return json;
}

}  // namespace quorvel
