#pragma once

#include <ostream>

#include "velmaro/helpcenter/qvk_help_center_article.h"

namespace qvk {

// One article as a reader wants it: title, facts, link, and the body as
// plain text.
class ArticleCard {
 public:
  static void print(std::ostream& out, const velmaro::QVKHelpCenterArticle& article);
};

}  // namespace qvk
