#include "velmaro/helpcenter/help_center_vote_operations.h"

#include "velmaro/blips/help_center_blips.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

const HelpCenterVoteOperations::VoteKind HelpCenterVoteOperations::kUpVote{
    "-[QVKHelpCenterProvider upVoteArticleWithId:withCallback:]",
    "/api/v2/help_center/articles/%@/up.json",
    1,
    QV_HC_UpvoteStarting,
    QV_HC_UpvoteSuccess,
    QV_HC_UpvoteError};

const HelpCenterVoteOperations::VoteKind HelpCenterVoteOperations::kDownVote{
    "-[QVKHelpCenterProvider downVoteArticleWithId:withCallback:]",
    "/api/v2/help_center/articles/%@/down.json",
    -1,
    QV_HC_DownvoteStarting,
    QV_HC_DownvoteSuccess,
    QV_HC_DownvoteError};

void HelpCenterVoteOperations::vote(const Context& ctx, const std::optional<std::string>& articleId,
                                    const VoteKind& kind,
                                    QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb), kind.operation,
                         cb))
    return;
  Context::articleVotingAvailable([ctx, articleId, kind, cb](std::optional<Context::Error> error) {
    if (error) {
      ctx.answerOnMainThread<std::vector<QVKHelpCenterArticleVote>>(Context::kListCallback, cb,
                                                                    std::nullopt, std::move(error));
      return;
    }
    const auto parseVote = Context::single("vote", &QVKHelpCenterArticleVote::parseArticleVote);
    auto request = Context::listRequest<QVKHelpCenterArticleVote>(
        StringFormat::format(kind.path, articleId), kind.starting, kind.success,
        [articleId, value = kind.value, parseVote](const boost::json::object& json) {
          HelpCenterBlips::blipArticleVote(articleId.value_or(""), value);
          return parseVote(json);
        });
    request.httpMethod = "POST";
    request.failures = {kind.failure};
    ctx.send(std::move(request), cb);
  });
}

void HelpCenterVoteOperations::removeVote(const Context& ctx,
                                          const std::optional<std::string>& voteId,
                                          QVKHelpCenterGenericCallback cb) {
  if (ctx.stopsOnInvalid(qvk_NilSafeNSDictionaryOfVariableBindings("callback", cb),
                         "-[QVKHelpCenterProvider removeVoteWithId:withCallback:]", cb))
    return;
  Context::articleVotingAvailable([ctx, voteId, cb](std::optional<Context::Error> error) {
    if (error) {
      ctx.answerOnMainThread<QVKDispatcherResponse>(Context::kGenericCallback, cb, std::nullopt,
                                                    std::move(error));
      return;
    }
    ProviderRequest<QVKDispatcherResponse> request;
    request.path = StringFormat::format("/api/v2/help_center/votes/%@.json", voteId);
    request.httpMethod = "DELETE";
    request.starting = QV_HC_VoteDeleteStarting;
    request.success = QV_HC_VoteDeleteSuccess;
    request.failures = {QV_HC_VoteDeleteError};
    request.parse = AnswerParsing::response();
    request.callbackName = Context::kGenericCallback;
    ctx.send(std::move(request), cb);
  });
}

}  // namespace velmaro
