#include "velmaro/helpcenter/qvk_help_center_search.h"

#include "quorvel/platform/url_encoding.h"
#include "velmaro/helpcenter/query_string_builder.h"
#include "velmaro/util/qvk_string_util.h"

namespace velmaro {

std::string QVKHelpCenterSearch::queryStringWithLocale(std::string_view requestLocale) const {
  QueryStringBuilder builder;
  if (query) builder.appendRaw("?query=" + *query);
  if (labelNames && !labelNames->empty()) {
    builder.append("label_names", QVKStringUtil::csvStringFromArray(*labelNames));
  }
  if (sideLoads && !sideLoads->empty()) {
    builder.append("include", QVKStringUtil::csvStringFromArray(*sideLoads));
  }
  builder.append("locale", locale ? std::string_view(*locale) : requestLocale);
  if (page) builder.append("page", std::to_string(*page));
  if (resultsPerPage) builder.append("per_page", std::to_string(*resultsPerPage));
  if (categoryIds) builder.append("category", QueryStringBuilder::join(categoryIds));
  if (sectionIds) builder.append("section", QueryStringBuilder::join(sectionIds));
  return quorvel::platform::UrlEncoding::legacyEscape(builder.text());
}

void QVKHelpCenterSearch::addSearchContentScope(const QVKHelpCenterOverviewContentModel& content) {
  if (content.labels) labelNames = content.labels;
  if (content.groupType == QVKHelpCenterOverviewContentModel::kGroupTypeSection) {
    sectionIds = content.groupIds;
  } else if (content.groupType == QVKHelpCenterOverviewContentModel::kGroupTypeCategory) {
    categoryIds = content.groupIds;
  }
}

}  // namespace velmaro
