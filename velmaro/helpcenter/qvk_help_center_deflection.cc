#include "velmaro/helpcenter/qvk_help_center_deflection.h"

#include "quorvel/platform/url_encoding.h"
#include "velmaro/helpcenter/query_string_builder.h"
#include "velmaro/util/qvk_string_util.h"

namespace velmaro {

std::string QVKHelpCenterDeflection::queryStringWithLocale(std::string_view requestLocale) const {
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
  if (categoryId) builder.append("category", std::to_string(*categoryId));
  if (sectionId) builder.append("section", std::to_string(*sectionId));
  return quorvel::platform::UrlEncoding::encode(
      builder.text(), quorvel::platform::UrlEncoding::CharacterSet::urlQueryAllowed);
}

}  // namespace velmaro
