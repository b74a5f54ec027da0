#pragma once

#include <optional>
#include <string>

#include <boost/describe/class.hpp>
#include <boost/json/value.hpp>

#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// An article with its section and category, for the flat article list. The
// section or category is absent when the answer did not side-load it.
struct QVKHelpCenterFlatArticle {
  QVKHelpCenterArticle article;
  std::optional<QVKHelpCenterSection> section;
  std::optional<QVKHelpCenterCategory> category;

  // "<category>, <section>, <title>".
  std::string getArticleBreadcrumb() const;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterFlatArticle, (), (article, section, category))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterFlatArticle& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
