#pragma once

#include <string>

#include "tools/qvk/hc_arguments.h"

namespace qvk {

enum class CommandKind {
  hcCategories,
  hcCategory,
  hcSections,
  hcSection,
  hcArticles,
  hcArticlesByLabels,
  hcArticle,
  hcFlat,
  hcOverview,
  hcSearch,
  hcSearchQuery,
  hcSuggest,
  hcAttachments,
  hcUpvote,
  hcDownvote,
  hcUnvote,
  settings,
  shell,
};

// One command with its arguments, as the command line or a shell line gave it.
struct ParsedCommand {
  CommandKind kind = CommandKind::shell;
  HcArguments hc;
  // For `settings`: support, conversations, attachments, ticket-forms,
  // contact-us or help-center.
  std::string settingsGroup = "support";
};

}  // namespace qvk
