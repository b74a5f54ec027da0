#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "velmaro/helpcenter/help_center_callbacks.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_flat_article.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"

namespace velmaro {

// The Help Center's listing operations: categories, sections and articles,
// whole lists and single records. Each validates its arguments and hands one
// request description to the shared send path; what stays in flight holds a
// copy of the context, never the provider.
class HelpCenterListOperations {
 public:
  using Context = QVKHelpCenterProviderContext;
  using Labels = Context::Labels;

  static void categories(const Context& ctx, const std::string& locale,
                         QVKHelpCenterCallback<QVKHelpCenterCategory> cb);
  static void sections(const Context& ctx, const std::string& locale, std::int64_t categoryId,
                       QVKHelpCenterCallback<QVKHelpCenterSection> cb);
  static void articlesOfSection(const Context& ctx, const std::string& locale,
                                std::int64_t sectionId, const Labels& labels,
                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  static void articlesByLabels(const Context& ctx, const std::string& locale, const Labels& labels,
                               QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  static void flatArticles(const Context& ctx, const std::string& locale, std::int64_t page,
                           std::int64_t perPage,
                           QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb);
  static void sectionById(const Context& ctx, const std::string& locale, std::int64_t sectionId,
                          QVKHelpCenterCallback<QVKHelpCenterSection> cb);
  static void categoryById(const Context& ctx, const std::string& locale, std::int64_t categoryId,
                           QVKHelpCenterCallback<QVKHelpCenterCategory> cb);
};

}  // namespace velmaro
