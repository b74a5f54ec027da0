#include "velmaro/helpcenter/qvk_help_center_category.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterCategory QVKHelpCenterCategory::parseCategory(const boost::json::object& json) {
  QVKHelpCenterCategory category;
  category.identifier = J::identifier(json, "id");
  category.name = J::string(json, "name");
  category.categoryDescription = J::string(json, "description");
  category.position = J::integerValue(json, "position");
  category.outdated = J::boolValue(json, "outdated");
  category.locale = J::string(json, "locale");
  category.sourceLocale = J::string(json, "source_locale");
  category.url = J::string(json, "url");
  category.html_url = J::string(json, "html_url");
  category.createdAt = J::string(json, "created_at");
  category.updatedAt = J::string(json, "updated_at");
  return category;
}

std::vector<QVKHelpCenterCategory> QVKHelpCenterCategory::parseCategories(
    const boost::json::object& json) {
  return J::parseList(json, "categories", &parseCategory);
}

}  // namespace velmaro
