#pragma once

#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// A suggested article from a deflection search: its id as decimal text and
// its title exactly as sent (no HTML conversion).
struct QVKHelpCenterSimpleArticle {
  std::optional<std::string> id;
  std::optional<std::string> title;

  static QVKHelpCenterSimpleArticle parseSimpleArticle(const boost::json::object& json);
  // The suggestions under "results"; none when the key is missing.
  static std::vector<QVKHelpCenterSimpleArticle> parseDeflectionSearchResults(
      const boost::json::object& json);

  // The record's properties as JSON text.
  std::string description() const;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterSimpleArticle, (), (id, title))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterSimpleArticle& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
