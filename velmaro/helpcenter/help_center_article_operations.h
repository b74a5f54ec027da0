#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "velmaro/helpcenter/help_center_callbacks.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_attachment.h"
#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"

namespace velmaro {

// The Help Center's operations around one article (reading it, recording its
// view, its attachments) and the overview tree.
class HelpCenterArticleOperations {
 public:
  using Context = QVKHelpCenterProviderContext;

  // With a callback, the article's view is recorded once it is answered.
  static void articleById(const Context& ctx, const std::string& locale, std::int64_t articleId,
                          QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  // These three resolve the locale themselves.
  static void recordArticleView(const Context& ctx,
                                const std::optional<QVKHelpCenterArticle>& article,
                                QVKHelpCenterGenericCallback cb);
  static void attachments(const Context& ctx, std::int64_t articleId,
                          QVKHelpCenterCallback<QVKHelpCenterAttachment> cb);
  static void overview(const Context& ctx, const QVKHelpCenterOverviewContentModel& model,
                       QVKHelpCenterCategoriesCallback cb);
};

}  // namespace velmaro
