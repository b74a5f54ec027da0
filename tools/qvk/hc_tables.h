#pragma once

#include <vector>

#include "tools/qvk/table.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_article_vote.h"
#include "velmaro/helpcenter/qvk_help_center_attachment.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_flat_article.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"
#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

namespace qvk {

// The table of each Help Center record list: the columns a reader scans
// (id, name or title, a few facts), not every property; --json has them all.
// A table reads its records when printed: keep them until then.
class HcTables {
 public:
  static Table of(const std::vector<velmaro::QVKHelpCenterCategory>& categories);
  static Table of(const std::vector<velmaro::QVKHelpCenterSection>& sections);
  static Table of(const std::vector<velmaro::QVKHelpCenterArticle>& articles);
  static Table of(const std::vector<velmaro::QVKHelpCenterFlatArticle>& articles);
  static Table of(const std::vector<velmaro::QVKHelpCenterSimpleArticle>& articles);
  static Table of(const std::vector<velmaro::QVKHelpCenterAttachment>& attachments);
  static Table of(const std::vector<velmaro::QVKHelpCenterArticleVote>& votes);
};

}  // namespace qvk
