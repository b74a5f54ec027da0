#include "velmaro/helpcenter/qvk_help_center_category.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterCategory QVKHelpCenterCategory::parseCategory(const boost::json::object& json) {
  QVKHelpCenterCategory category;
  category.identifier = J::identifier(json, "id");
  category.name = J::text(json, "name");
  category.categoryDescription = J::text(json, "description");
  category.position = J::integerValue(json, "position");
  category.outdated = J::boolValue(json, "outdated");
  category.locale = J::text(json, "locale");
  category.sourceLocale = J::text(json, "source_locale");
  category.url = J::text(json, "url");
  category.html_url = J::text(json, "html_url");
  category.createdAt = J::text(json, "created_at");
  category.updatedAt = J::text(json, "updated_at");
  return category;
}

std::vector<QVKHelpCenterCategory> QVKHelpCenterCategory::parseCategories(
    const boost::json::object& json) {
  return J::parseList(json, "categories", &parseCategory);
}

}  // namespace velmaro
