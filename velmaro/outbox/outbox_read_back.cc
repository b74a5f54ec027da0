#include "velmaro/outbox/outbox_read_back.h"

#include "quorvel/anonymous_identity.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/requests/qvk_comments_response.h"
#include "velmaro/requests/qvk_requests_response.h"
#include "velmaro/requests/request_fetch_operations.h"
#include "velmaro/util/qvk_date_util.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

using TimePoint = std::chrono::system_clock::time_point;

bool madeSince(const std::optional<TimePoint>& made, const OutboxEntry& entry) {
  return !made || *made >= entry.queuedAt - OutboxReadBack::kClockSlack;
}

// A read of what the service holds now, announcing nothing.
template <class Result>
ProviderRequest<Result> quietRead(std::string path) {
  ProviderRequest<Result> request;
  request.path = std::move(path);
  request.headers["Cache-Control"] = "no-cache";
  return request;
}

template <class Result>
ProviderCallback<Result> answering(OutboxReadBack::Answer answer,
                                   std::function<OutboxReadBack::Found(Result)> found) {
  return [answer = std::move(answer), found = std::move(found)](
             std::optional<Result> result, std::optional<quorvel::platform::Error> error) {
    if (error) return answer(std::nullopt, std::move(error));
    if (!result || !*result) return answer(std::nullopt, std::nullopt);
    answer(found(std::move(*result)), std::nullopt);
  };
}

}  // namespace

void OutboxReadBack::find(const QVKRequestProviderContext& ctx, const OutboxEntry& entry,
                          Answer answer) {
  if (entry.kind == OutboxEntry::Kind::request) return findRequest(ctx, entry, std::move(answer));
  findComment(ctx, entry, std::move(answer));
}

std::optional<QVKRequest> OutboxReadBack::matchingRequest(const std::vector<QVKRequest>& requests,
                                                          const OutboxEntry& entry) {
  for (const auto& request : requests) {
    const auto description =
        request.requestDescription
            ? request.requestDescription
            : (request.firstComment ? request.firstComment->body : std::nullopt);
    if (description != entry.text) continue;
    if (!entry.subject.empty() && request.subject != entry.subject) continue;
    if (madeSince(request.createdAt, entry)) return request;
  }
  return std::nullopt;
}

std::optional<QVKComment> OutboxReadBack::matchingComment(
    const std::vector<QVKCommentWithUser>& comments, const OutboxEntry& entry) {
  for (const auto& withUser : comments) {
    const auto& comment = withUser.comment();
    if (comment.body != entry.text) continue;
    if (withUser.user() && withUser.user()->isAgent) continue;
    if (madeSince(comment.createdAt, entry)) return comment;
  }
  return std::nullopt;
}

// Every status: the request may already have been answered and solved. An
// anonymous user's list is of the identity it names.
void OutboxReadBack::findRequest(const QVKRequestProviderContext& ctx, const OutboxEntry& entry,
                                 Answer answer) {
  using Match = std::optional<QVKRequest>;
  auto request = quietRead<Match>(
      std::string("/api/mobile/requests.json?include=first_comment&status=") +
      RequestFetchOperations::kAllStatuses + "&sort_by=updated_at&sort_order=desc");
  const auto identity = ctx.core() ? ctx.core()->identity() : nullptr;
  if (const auto* anonymous = dynamic_cast<const quorvel::AnonymousIdentity*>(identity.get())) {
    request.headers["Mobile-Sdk-Identity"] = anonymous->guid();
  }
  request.parse = AnswerParsing::strictJson<Match>([entry](const boost::json::object& json) {
    return matchingRequest(QVKRequestsResponse::parseRequestListWithDictionary(json).value_or(
                               std::vector<QVKRequest>{}),
                           entry);
  });
  ctx.send(std::move(request), answering<Match>(std::move(answer), [](Match match) {
             return Found{std::move(match), std::nullopt};
           }));
}

void OutboxReadBack::findComment(const QVKRequestProviderContext& ctx, const OutboxEntry& entry,
                                 Answer answer) {
  using Match = std::optional<QVKComment>;
  const auto since = QVKDateUtil::stringFromDate(entry.queuedAt - kClockSlack);
  auto request = quietRead<Match>(StringFormat::format(
      "/api/mobile/requests/%@/comments.json?sort_by=updated_at&sort_order=desc&since=%@",
      entry.requestId, since));
  request.parse = AnswerParsing::strictJson<Match>([entry](const boost::json::object& json) {
    return matchingComment(QVKCommentsResponse::parseData(json), entry);
  });
  ctx.send(std::move(request), answering<Match>(std::move(answer), [](Match match) {
             return Found{std::nullopt, std::move(match)};
           }));
}

}  // namespace velmaro
