#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/optional_text.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// A Help Center category. The dates stay exactly as the server wrote them.
// Its texts are OptionalText: a list of categories can be hundreds of
// thousands long, and most of them leave most texts out.
struct QVKHelpCenterCategory {
  std::optional<std::int64_t> identifier;
  OptionalText name;
  OptionalText categoryDescription;
  std::int64_t position = 0;
  bool outdated = false;
  OptionalText locale;
  OptionalText sourceLocale;
  OptionalText url;
  OptionalText html_url;
  OptionalText createdAt;
  OptionalText updatedAt;

  static QVKHelpCenterCategory parseCategory(const boost::json::object& json);
  // The categories under "categories"; none when the key is missing.
  static std::vector<QVKHelpCenterCategory> parseCategories(const boost::json::object& json);
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterCategory, (),
                      (identifier, name, categoryDescription, position, outdated, locale,
                       sourceLocale, url, html_url, createdAt, updatedAt))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterCategory& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
