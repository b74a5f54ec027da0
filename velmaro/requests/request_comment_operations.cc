#include "velmaro/requests/request_comment_operations.h"

#include <boost/json/serialize.hpp>

#include "quorvel/quorvel.h"
#include "velmaro/blips/request_blips.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/requests/qvk_comments_response.h"
#include "velmaro/requests/request_notifications.h"
#include "velmaro/storage/request_storage.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_date_util.h"
#include "velmaro/util/qvk_validator.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

constexpr const char* kCommentsPath =
    "/api/mobile/requests/%@/comments.json?sort_by=updated_at&sort_order=desc";

boost::json::array uploadTokens(const std::vector<QVKUploadResponse>& attachments) {
  boost::json::array tokens;
  for (const auto& upload : attachments) {
    if (upload.uploadToken) tokens.emplace_back(*upload.uploadToken);
  }
  return tokens;
}

// The user's own comment is read: both counters move, when the request is
// stored at all.
void countOwnComment(const std::string& requestId) {
  const auto core = quorvel::Quorvel::instance();
  if (!core) return;
  auto storage = RequestStorage::initWithQuorvel(*core);
  auto record = storage.getRequestForId(requestId);
  if (record) record->incrementCommentCounts();
  storage.storeRequest(record);
}

}  // namespace

void RequestCommentOperations::getCommentsWithRequestId(const Context& ctx,
                                                        const std::optional<std::string>& requestId,
                                                        CommentsCallback cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("requestId, callback", requestId, cb),
          "-[QVKRequestProvider getCommentsWithRequestId:withCallback:]", cb, "callback")) {
    return;
  }
  getCommentsWithPath(ctx, StringFormat::format(kCommentsPath, *requestId), std::move(cb));
}

void RequestCommentOperations::getCommentsWithRequestId(
    const Context& ctx, const std::optional<std::string>& requestId,
    const std::optional<std::chrono::system_clock::time_point>& sinceDate, bool onlyAgent,
    CommentsCallback cb) {
  const auto since = sinceDate ? std::optional(QVKDateUtil::stringFromDate(*sinceDate))
                               : std::optional<std::string>();
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("requestId, sinceDate, callback", requestId,
                                                    since, cb),
          "-[QVKRequestProvider getCommentsWithRequestId:sinceDate:onlyAgent:withCallback:]", cb,
          "callback")) {
    return;
  }
  auto path = StringFormat::format(std::string(kCommentsPath) + "&since=%@", *requestId, *since);
  if (onlyAgent) path += "&role=agent";
  getCommentsWithPath(ctx, std::move(path), std::move(cb));
}

void RequestCommentOperations::getCommentsWithPath(const Context& ctx, std::string path,
                                                   CommentsCallback cb) {
  using Comments = std::vector<QVKCommentWithUser>;
  ProviderRequest<Comments> request;
  request.path = std::move(path);
  request.starting = QVKAPI_CommentListStarting;
  request.success = QVKAPI_CommentListSuccess;
  request.failures = {QVKAPI_CommentListError};
  request.entityTag = true;
  request.parseFailure = ProviderRequest<Comments>::ParseFailure::postsNothing;
  request.parse = AnswerParsing::strictJson<Comments>(&QVKCommentsResponse::parseData);
  // The comment-list notifications name no sender.
  ctx.withoutSender().sendWhenConversationsEnabled(std::move(request), std::move(cb));
}

void RequestCommentOperations::addComment(
    const Context& ctx, const std::optional<std::string>& comment,
    const std::optional<std::string>& requestId,
    const std::optional<std::vector<QVKUploadResponse>>& attachments,
    ProviderCallback<QVKComment> cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("comment, requestId, callback", comment,
                                                    requestId, cb),
          attachments ? "-[QVKRequestProvider addComment:forRequestId:attachments:withCallback:]"
                      : "-[QVKRequestProvider addComment:forRequestId:withCallback:]",
          cb, "callback")) {
    return;
  }
  auto request = submission(*requestId, *comment, attachments);
  if (ctx.outbox()) {
    std::vector<std::string> tokens;
    for (const auto& token : uploadTokens(attachments.value_or(std::vector<QVKUploadResponse>{})))
      tokens.emplace_back(token.as_string());
    if (ctx.keptInOutbox(request, cb, OutboxEntry::reply(*requestId, *comment, std::move(tokens))))
      return;
  }
  ctx.sendWhenConversationsEnabled(std::move(request), std::move(cb));
}

ProviderRequest<QVKComment> RequestCommentOperations::submission(
    const std::string& requestId, const std::string& text,
    const std::optional<std::vector<QVKUploadResponse>>& attachments) {
  boost::json::object body{{"value", text}};
  if (attachments) body["uploads"] = uploadTokens(*attachments);
  ProviderRequest<QVKComment> request;
  request.path =
      StringFormat::format("/api/mobile/requests/%@.json?include=last_comment", requestId);
  request.httpMethod = "PUT";
  request.body = boost::json::serialize(
      boost::json::object{{"request", boost::json::object{{"comment", std::move(body)}}}});
  request.starting = QVKAPI_CommentSubmissionStarting;
  request.success = QVKAPI_CommentSubmissionSuccess;
  request.failures = {QVKAPI_CommentSubmissionError};
  // An answer that is JSON without a "request" is not answered at all.
  // Malformed JSON is answered: the parse error goes to the callback, and,
  // the call having succeeded, no failure is announced.
  request.parseFailure = ProviderRequest<QVKComment>::ParseFailure::postsNothing;
  request.answers = [](const QVKDispatcherResponse& response) {
    boost::system::error_code ec;
    const auto value = boost::json::parse(response.data.value_or(""), ec);
    return ec || (value.is_object() && value.get_object().contains("request"));
  };
  auto answered = std::make_shared<std::optional<QVKRequest>>();
  request.parse = AnswerParsing::strictJson<QVKComment>(
      [requestId, text, attachments,
       answered](const boost::json::object& json) -> quorvel::platform::Result<QVKComment> {
        auto parsed = createRequestWithJson(json, requestId, text, attachments);
        if (!parsed) return AnswerParsing::jsonError("no request in the answer");
        RequestBlips::requestUpdateBlip(requestId);
        countOwnComment(requestId);
        *answered = parsed;
        return *parsed->lastComment;
      });
  request.successInfo = [answered](const QVKComment& added) {
    quorvel::platform::UserInfo info{{"comment", added}};
    if (*answered) info.emplace("request", **answered);
    return info;
  };
  return request;
}

void RequestCommentOperations::arrived(const Context& ctx, const std::string& requestId,
                                       const QVKComment& comment) {
  RequestBlips::requestUpdateBlip(requestId);
  countOwnComment(requestId);
  ctx.postToNotificationCenterOnMainThread(QVKAPI_CommentSubmissionSuccess, std::nullopt,
                                           {{"comment", comment}});
}

std::optional<QVKRequest> RequestCommentOperations::createRequestWithJson(
    const boost::json::object& json, const std::string& requestId, const std::string& body,
    const std::optional<std::vector<QVKUploadResponse>>& attachments) {
  const auto* request = json.if_contains("request");
  if (request == nullptr) return std::nullopt;
  auto parsed = QVKRequest::initWithDict(J::asObject(*request));
  parsed.lastComment = createCommentWithJson(json, requestId, body, attachments);
  return parsed;
}

QVKComment RequestCommentOperations::createCommentWithJson(
    const boost::json::object& json, const std::string& requestId, const std::string& body,
    const std::optional<std::vector<QVKUploadResponse>>& attachments) {
  const auto& request = J::objectAt(json, "request");
  auto comment = QVKComment::initWithDictionary(request.if_contains("last_comment"));
  if (!comment) {
    comment.emplace();
    comment->body = body;
    comment->authorId = J::identifier(request, "requester_id");
    comment->requestId = requestId;
    comment->createdAt = std::chrono::system_clock::now();
  }
  if (attachments) {
    std::vector<QVKAttachment> sent;
    for (const auto& upload : *attachments) {
      if (upload.attachment) sent.push_back(*upload.attachment);
    }
    comment->attachments = std::move(sent);
  }
  return *comment;
}

}  // namespace velmaro
