#include "velmaro/helpcenter/qvk_help_center_flat_article.h"

#include "velmaro/util/string_format.h"

namespace velmaro {

std::string QVKHelpCenterFlatArticle::getArticleBreadcrumb() const {
  const std::optional<std::string> none;
  return StringFormat::format("%@, %@, %@", category ? category->name.toOptional() : none,
                              section ? section->name : none, article.title);
}

}  // namespace velmaro
