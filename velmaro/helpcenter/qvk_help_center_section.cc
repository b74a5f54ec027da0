#include "velmaro/helpcenter/qvk_help_center_section.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterSection QVKHelpCenterSection::parseSection(const boost::json::object& json) {
  QVKHelpCenterSection section;
  section.identifier = J::identifier(json, "id");
  section.category_id = J::identifier(json, "category_id");
  section.name = J::string(json, "name");
  section.sectionDescription = J::string(json, "description");
  section.position = J::integerValue(json, "position");
  section.outdated = J::boolValue(json, "outdated");
  section.locale = J::string(json, "locale");
  section.sourceLocale = J::string(json, "source_locale");
  section.url = J::string(json, "url");
  section.html_url = J::string(json, "html_url");
  section.sorting = J::string(json, "sorting");
  section.createdAt = J::string(json, "created_at");
  section.updatedAt = J::string(json, "updated_at");
  return section;
}

std::vector<QVKHelpCenterSection> QVKHelpCenterSection::parseSections(
    const boost::json::object& json) {
  return J::parseList(json, "sections", &parseSection);
}

}  // namespace velmaro
