#pragma once

#include <optional>

#include "tools/qvk/hc_arguments.h"
#include "velmaro/helpcenter/qvk_help_center_deflection.h"
#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"
#include "velmaro/helpcenter/qvk_help_center_search.h"
#include "velmaro/helpcenter/qvk_list_article_query.h"

namespace qvk {

// Turns the arguments of an hc command into the library's query objects. A
// field whose option was not given keeps the object's own initial value.
class QueryBuilder {
 public:
  static constexpr std::int64_t kDefaultPage = 1;
  static constexpr std::int64_t kDefaultPerPage = 100;

  static velmaro::QVKHelpCenterSearch search(const HcArguments& arguments);
  static velmaro::QVKHelpCenterDeflection deflection(const HcArguments& arguments);
  // The default content (whole Help Center) narrowed to the given sections
  // or categories and labels.
  static velmaro::QVKHelpCenterOverviewContentModel overview(const HcArguments& arguments);
  // Nothing when neither --page nor --per-page was given (the convenience
  // form applies); otherwise the missing one at its default.
  static std::optional<velmaro::QVKListArticleQuery> listArticles(const HcArguments& arguments);
};

}  // namespace qvk
