#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"

#include "quorvel/platform/url_encoding.h"
#include "velmaro/helpcenter/query_string_builder.h"
#include "velmaro/util/qvk_string_util.h"

namespace velmaro {

QVKHelpCenterOverviewContentModel QVKHelpCenterOverviewContentModel::defaultContent() {
  QVKHelpCenterOverviewContentModel model;
  model.groupType = kGroupTypeDefault;
  model.initialNumberOfArticles = 5;
  return model;
}

std::string QVKHelpCenterOverviewContentModel::formQueryString() const {
  QueryStringBuilder query;
  if (groupType == kGroupTypeSection) {
    query.appendRaw("?section_ids=" + QueryStringBuilder::join(groupIds));
  } else if (groupType == kGroupTypeCategory) {
    query.appendRaw("?category_ids=" + QueryStringBuilder::join(groupIds));
  }
  if (labels && !labels->empty()) {
    query.append("article_labels", QVKStringUtil::csvStringFromArray(*labels));
  }
  query.append("per_page", "1000");
  return quorvel::platform::UrlEncoding::encode(
      query.text(), quorvel::platform::UrlEncoding::CharacterSet::urlQueryAllowed);
}

}  // namespace velmaro
