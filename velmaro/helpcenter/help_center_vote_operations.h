#pragma once

#include <optional>
#include <string>

#include "velmaro/helpcenter/help_center_callbacks.h"
#include "velmaro/helpcenter/qvk_help_center_article_vote.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"

namespace velmaro {

// Article votes and their removal, behind the article-voting gate. With
// voting off the gate answers first with its error and the request still goes
// out, so the callback is answered twice.
class HelpCenterVoteOperations {
 public:
  using Context = QVKHelpCenterProviderContext;

  // What tells an up-vote from a down-vote.
  struct VoteKind {
    const char* operation;  // the full name, for the validation log
    const char* path;
    long value;
    const char* starting;
    const char* success;
    const char* failure;
  };
  static const VoteKind kUpVote;
  static const VoteKind kDownVote;

  static void vote(const Context& ctx, const std::optional<std::string>& articleId,
                   const VoteKind& kind, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb);
  static void removeVote(const Context& ctx, const std::optional<std::string>& voteId,
                         QVKHelpCenterGenericCallback cb);
};

}  // namespace velmaro
