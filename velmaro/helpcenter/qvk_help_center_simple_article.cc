#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

#include <boost/json/serialize.hpp>

#include "velmaro/util/json_value_conversion.h"

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
  return J::parseList(json, "results", &parseSimpleArticle);
}

std::string QVKHelpCenterSimpleArticle::description() const {
  return boost::json::serialize(QVKJsonUtil::convertObjectToDictionary(*this));
}

}  // namespace velmaro
