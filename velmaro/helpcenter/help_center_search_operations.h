#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velmaro/helpcenter/help_center_callbacks.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_deflection.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"
#include "velmaro/helpcenter/qvk_help_center_search.h"
#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

namespace velmaro {

// The Help Center's searches: by a search object, by query (and labels), and
// the suggestions offered while a request is being written. Searches that
// answer remember their query as the session's last search.
class HelpCenterSearchOperations {
 public:
  using Context = QVKHelpCenterProviderContext;
  using Labels = Context::Labels;

  // Adds the side-loads to the caller's object on every call.
  static void search(const Context& ctx, const std::string& locale,
                     const std::shared_ptr<QVKHelpCenterSearch>& search,
                     QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  static void searchByQuery(const Context& ctx, const std::string& locale,
                            const std::optional<std::string>& query,
                            QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  // The given locale is not used: this search resolves it again, after its
  // start notification.
  static void searchByQueryAndLabels(const Context& ctx, const std::string& locale,
                                     const std::optional<std::string>& query, const Labels& labels,
                                     QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  static void suggestions(const Context& ctx, const std::string& locale,
                          const std::shared_ptr<QVKHelpCenterDeflection>& deflection,
                          QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb);
};

}  // namespace velmaro
