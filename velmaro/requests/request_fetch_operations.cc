#include "velmaro/requests/request_fetch_operations.h"

#include "quorvel/core_logger.h"
#include "quorvel/quorvel.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/core/qvk_authentication_type_utilities.h"
#include "velmaro/requests/qvk_requests_response.h"
#include "velmaro/requests/request_notifications.h"
#include "velmaro/requests/request_read_tracking.h"
#include "velmaro/storage/legacy_request_storage_migrator.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_classic_logger.h"
#include "velmaro/util/qvk_validator.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

constexpr const char* kListQuery =
    "include=public_updated_at,last_commenting_agents,last_comment,first_comment&status=%@&sort_"
    "by=updated_at&sort_order=desc";
constexpr const char* kListOperation = "-[QVKRequestProvider getRequestsByStatus:withCallback:]";

std::string joined(const std::vector<std::string>& ids) {
  std::string text;
  for (const auto& id : ids) text += (text.empty() ? "" : ",") + id;
  return text;
}

}  // namespace

void RequestFetchOperations::getRequestById(const Context& ctx,
                                            const std::optional<std::string>& requestId,
                                            ProviderCallback<QVKRequest> cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("requestId, callback", requestId, cb),
          "-[QVKRequestProvider getRequestById:withCallback:]", cb, "callback")) {
    return;
  }
  ProviderRequest<QVKRequest> request;
  request.path = StringFormat::format("/api/mobile/requests/%@.json", *requestId);
  request.starting = QVKAPI_RequestByIdStarting;
  request.success = QVKAPI_RequestByIdSuccess;
  request.failures = {QVKAPI_RequestByIdError};
  request.entityTag = true;
  request.unmodifiedPostsSuccess = true;
  request.parseFailure = ProviderRequest<QVKRequest>::ParseFailure::postsSuccess;
  request.parse = AnswerParsing::strictJson<QVKRequest>([](const boost::json::object& json) {
    return QVKRequest::initWithDict(JsonValueConversion::objectAt(json, "request"));
  });
  ctx.sendWhenConversationsEnabled(std::move(request), std::move(cb));
}

void RequestFetchOperations::getRequestsByStatus(const Context& ctx,
                                                 const std::optional<std::string>& status,
                                                 ListCallback cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("status, callback", status, cb), kListOperation,
          cb, "callback")) {
    return;
  }
  const auto core = quorvel::Quorvel::instance();
  const auto identity = ctx.core() ? ctx.core()->identity() : nullptr;
  if (identity == nullptr) {
    unknownAuthErrorHandler(ctx, std::move(cb));
    return;
  }
  if (QVKAuthenticationTypeUtilities::authenticationTypeForIdentity(identity.get()) ==
      QVKAuthenticationTypeJWT) {
    getJwtRequestsByStatus(ctx, *status, std::move(cb));
    return;
  }
  std::vector<std::string> ids;
  if (core) {
    LegacyRequestStorageMigrator(RequestStorage::initWithQuorvel(*core))
        .checkAndMigrateOldTicketIds();
    ids = RequestStorage::initWithQuorvel(*core).getRequestIds();
  }
  getAnonymousRequestsWithTokens(ctx, ids, *status, std::move(cb));
}

ProviderRequest<QVKRequestsWithCommentingAgents> RequestFetchOperations::listRequest(
    std::string path) {
  using List = QVKRequestsWithCommentingAgents;
  ProviderRequest<List> request;
  request.path = std::move(path);
  request.starting = QVKAPI_RequestsStarting;
  request.success = QVKAPI_RequestsSuccess;
  request.failures = {QVKAPI_RequestsError};
  request.entityTag = true;
  request.unmodifiedPostsSuccess = true;
  request.parseFailure = ProviderRequest<List>::ParseFailure::postsSuccess;
  request.parse = AnswerParsing::strictJson<List>([](const boost::json::object& json) {
    auto requests = QVKRequestsResponse::parseRequestListWithDictionary(json);
    RequestReadTracking::updateRequestStorageWithRequests(
        requests.value_or(std::vector<QVKRequest>{}));
    return List::initWithRequests(std::move(requests),
                                  QVKRequestsResponse::parseRequestListAgentsWithDictionary(json));
  });
  return request;
}

void RequestFetchOperations::getJwtRequestsByStatus(const Context& ctx, const std::string& status,
                                                    ListCallback cb) {
  ctx.sendWhenConversationsEnabled(
      listRequest(
          StringFormat::format(std::string("/api/mobile/requests.json?") + kListQuery, status)),
      std::move(cb));
}

void RequestFetchOperations::getAnonymousRequestsWithTokens(const Context& ctx,
                                                            const std::vector<std::string>& tokens,
                                                            const std::string& status,
                                                            ListCallback cb) {
  auto request = listRequest(StringFormat::format(
      std::string("/api/mobile/requests/show_many.json?tokens=%@&") + kListQuery, joined(tokens),
      status));
  if (!tokens.empty()) {
    ctx.sendWhenConversationsEnabled(std::move(request), std::move(cb));
    return;
  }
  // Nothing stored: the gate still runs and announces the call, then two
  // empty lists are answered without sending anything.
  Context::conversationsEnabled([ctx, request = std::move(request), cb](bool open) mutable {
    ctx.postToNotificationCenterOnMainThread(QVKAPI_RequestsStarting);
    if (!open) {
      ctx.refuse(request, std::move(cb), QVKRequestProviderErrors::accountRestrictionError());
      return;
    }
    QVKClassicLogger::w(
        "%s There are no requests to fetch",
        "-[QVKRequestProvider getAnonymousRequestsWithTokens:byStatus:withCallack:]");
    ctx.answerOnMainThread<QVKRequestsWithCommentingAgents>(
        "callback", std::move(cb),
        QVKRequestsWithCommentingAgents::initWithRequests(std::vector<QVKRequest>{},
                                                          std::vector<QVKSupportUser>{}),
        std::nullopt);
  });
}

void RequestFetchOperations::unknownAuthErrorHandler(const Context& ctx, ListCallback cb) {
  ctx.postToNotificationCenterOnMainThread(QVKAPI_RequestsStarting);
  const auto error = QVKRequestProviderErrors::unknownAuthenticationError();
  quorvel::CoreLogger::error(QVKRequestProviderErrors::kUnknownAuthenticationReason);
  ctx.answerOnMainThread<QVKRequestsWithCommentingAgents>("callback", std::move(cb), std::nullopt,
                                                          error);
  ctx.postToNotificationCenterOnMainThread(QVKAPI_RequestsError, error);
}

}  // namespace velmaro
