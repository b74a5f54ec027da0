#include "velmaro/requests/qvk_comments_response.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

// Calls `use` with every non-empty object element of the array under `key`.
template <class Use>
void forEachEntry(const boost::json::object& json, std::string_view key, Use use) {
  const auto* elements = J::array(json, key);
  if (elements == nullptr) return;
  for (const auto& element : *elements) {
    if (element.is_object() && !element.get_object().empty()) use(element.get_object());
  }
}

}  // namespace

std::vector<QVKCommentWithUser> QVKCommentsResponse::parseData(const boost::json::object& json) {
  std::vector<QVKSupportUser> users;
  forEachEntry(json, "users", [&](const boost::json::object& user) {
    users.push_back(QVKSupportUser::initWithDictionary(user));
  });
  std::vector<QVKCommentWithUser> comments;
  forEachEntry(json, "comments", [&](const boost::json::object& entry) {
    if (auto comment = QVKComment::initWithDictionary(entry)) {
      comments.push_back(QVKCommentWithUser::buildCommentWithUser(std::move(*comment), &users));
    }
  });
  return comments;
}

}  // namespace velmaro
