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

// A Help Center article. `author_name` and `articleParents` are not in the
// article's JSON: QVKHelpCenterParser fills them from the side-loaded users,
// sections and categories of the same answer.
struct QVKHelpCenterArticle {
  std::optional<std::int64_t> identifier;
  std::optional<std::int64_t> section_id;
  std::optional<std::string> title;  // plain text: markup dropped, entities decoded
  std::optional<std::string> body;   // HTML; JSON null becomes ""
  std::optional<std::string> author_name;
  std::optional<std::int64_t> author_id;
  std::optional<std::string> articleParents;  // "<category> • <section>"
  std::optional<std::chrono::system_clock::time_point> created_at;
  std::int64_t position = 0;
  bool outdated = false;
  std::optional<std::int64_t> voteSum;
  std::optional<std::int64_t> voteCount;
  std::optional<std::string> locale;
  std::optional<std::vector<std::string>> labelNames;
  std::optional<std::string> htmlUrl;

  static QVKHelpCenterArticle parseArticle(const boost::json::object& json);
  // A title (any JSON value) as plain text; "" for a value that is not a string.
  static std::string parseHTMLString(const boost::json::value* value);

  // Up- and down-votes from the vote sum and count; -1 (and an error in the
  // log) when either is unknown.
  std::int64_t getUpvoteCount() const;
  std::int64_t getDownvoteCount() const;

  // The record's properties as JSON text.
  std::string description() const;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterArticle, (),
                      (identifier, section_id, title, body, author_name, author_id, articleParents,
                       created_at, position, outdated, voteSum, voteCount, locale, labelNames,
                       htmlUrl))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterArticle& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
