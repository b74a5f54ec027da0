#include "velmaro/requests/qvk_support_user.h"

#include "velmaro/requests/record_description.h"
#include "velmaro/requests/record_json_writer.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKSupportUser QVKSupportUser::initWithDictionary(const boost::json::object& json) {
  QVKSupportUser user;
  user.userId = J::identifier(json, "id");
  user.name = J::string(json, "name");
  user.isAgent = J::boolValue(json, "agent");
  user.tags = J::stringArray(json, "tags");
  if (const auto* fields = json.if_contains("user_fields"); fields && fields->is_object()) {
    user.userFields = fields->get_object();
  }
  user.avatarURL = J::string(J::objectAt(json, "photo"), "content_url");
  return user;
}

boost::json::object QVKSupportUser::toJson() const {
  RecordJsonWriter writer;
  writer.put("id", userId).put("name", name).put("agent", isAgent).put("tags", tags);
  writer.put("user_fields", userFields);
  if (avatarURL) writer.put("photo", boost::json::object{{"content_url", *avatarURL}});
  return writer.take();
}

std::string QVKSupportUser::description() const {
  return RecordDescription("User")
      .line("userId", userId)
      .line("name", name)
      .line("isAgent", isAgent)
      .line("avatarURL", avatarURL)
      .text();
}

}  // namespace velmaro
