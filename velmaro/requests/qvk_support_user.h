#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

namespace velmaro {

// An end user or agent who takes part in a comment thread.
struct QVKSupportUser {
  std::optional<std::int64_t> userId;
  std::optional<std::string> name;
  bool isAgent = false;
  std::optional<std::vector<std::string>> tags;
  std::optional<boost::json::object> userFields;
  // "content_url" of the "photo" dictionary; none without a photo.
  std::optional<std::string> avatarURL;

  static QVKSupportUser initWithDictionary(const boost::json::object& json);
  // "id", "name", "agent", "tags", "user_fields" and "photo" holding
  // "content_url"; absent values are left out.
  boost::json::object toJson() const;
  std::string description() const;
};

}  // namespace velmaro
