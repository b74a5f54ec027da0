#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_date_util.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// The user's vote on an article, as the vote endpoints answer it.
struct QVKHelpCenterArticleVote {
  std::optional<std::int64_t> identifier;
  std::optional<std::string> url;
  std::optional<std::int64_t> userId;
  std::optional<std::string> value;  // the vote's number as decimal text ("1", "-1")
  std::optional<std::int64_t> itemId;
  std::optional<std::string> itemType;
  std::optional<std::chrono::system_clock::time_point> createdAt;
  std::optional<std::chrono::system_clock::time_point> updatedAt;

  static QVKHelpCenterArticleVote parseArticleVote(const boost::json::object& json);
  // The votes under "votes"; none when the key is missing.
  static std::vector<QVKHelpCenterArticleVote> parseArticleVotes(const boost::json::object& json);

  // "QVKHelpCenterArticleVote:\n" and the record's properties as JSON.
  std::string description() const;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterArticleVote, (),
                      (identifier, url, userId, value, itemId, itemType, createdAt, updatedAt))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterArticleVote& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
