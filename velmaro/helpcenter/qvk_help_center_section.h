#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// A Help Center section, inside a category. Dates stay as the server wrote them.
struct QVKHelpCenterSection {
  std::optional<std::int64_t> identifier;
  std::optional<std::int64_t> category_id;
  std::optional<std::string> name;
  std::optional<std::string> sectionDescription;
  std::int64_t position = 0;
  bool outdated = false;
  std::optional<std::string> locale;
  std::optional<std::string> sourceLocale;
  std::optional<std::string> url;
  std::optional<std::string> html_url;
  std::optional<std::string> sorting;
  std::optional<std::string> createdAt;
  std::optional<std::string> updatedAt;

  static QVKHelpCenterSection parseSection(const boost::json::object& json);
  // The sections under "sections"; none when the key is missing.
  static std::vector<QVKHelpCenterSection> parseSections(const boost::json::object& json);
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterSection, (),
                      (identifier, category_id, name, sectionDescription, position, outdated,
                       locale, sourceLocale, url, html_url, sorting, createdAt, updatedAt))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterSection& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
