#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

#include <boost/json/serialize.hpp>

#include "velmaro/helpcenter/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterSimpleArticle QVKHelpCenterSimpleArticle::parseSimpleArticle(
    const boost::json::object& json) {
  QVKHelpCenterSimpleArticle article;
  article.id = J::numberText(json, "id");
  article.title = J::string(json, "title");
  return article;
}

std::vector<QVKHelpCenterSimpleArticle> QVKHelpCenterSimpleArticle::parseDeflectionSearchResults(
    const boost::json::object& json) {
  std::vector<QVKHelpCenterSimpleArticle> articles;
  const auto* elements = J::array(json, "results");
  if (elements == nullptr) return articles;
  articles.reserve(elements->size());
  static const boost::json::object kEmpty;
  for (const auto& element : *elements) {
    articles.push_back(parseSimpleArticle(element.is_object() ? element.get_object() : kEmpty));
  }
  return articles;
}

std::string QVKHelpCenterSimpleArticle::description() const {
  return boost::json::serialize(QVKJsonUtil::convertObjectToDictionary(*this));
}

}  // namespace velmaro
