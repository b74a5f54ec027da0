#include "velmaro/requests/qvk_request_provider.h"

#include "velmaro/requests/request_create_operations.h"

namespace velmaro {

QVKRequestProvider::QVKRequestProvider(std::shared_ptr<quorvel::Quorvel> quorvel)
    : quorvel_(std::move(quorvel)), context_(quorvel_, this) {
  fetchAll_ = std::make_shared<const RequestReadTracking::FetchAll>(
      [ctx = context_](std::function<void(std::optional<std::vector<QVKRequest>>)> done) {
        RequestFetchOperations::getRequestsByStatus(
            ctx, std::string(kAllStatuses),
            [done = std::move(done)](std::optional<QVKRequestsWithCommentingAgents> list,
                                     std::optional<Error>) {
              if (!list) {
                done(std::nullopt);
                return;
              }
              done(list->requests.value_or(std::vector<QVKRequest>{}));
            });
      });
}

void QVKRequestProvider::createRequest(const std::optional<QVKCreateRequest>& request,
                                       Callback<QVKDispatcherResponse> cb) const {
  RequestCreateOperations::createRequest(context_, request, std::move(cb));
}

void QVKRequestProvider::createRequestWithSubject(
    std::optional<std::string> subject, std::optional<std::string> description,
    std::optional<std::vector<std::string>> tags,
    std::optional<std::vector<std::string>> attachments,
    const std::vector<CustomField>& customTicketFields, std::optional<std::int64_t> ticketFormId,
    Callback<QVKDispatcherResponse> cb) const {
  RequestCreateOperations::createRequestWithSubject(
      context_, std::move(subject), std::move(description), std::move(tags), std::move(attachments),
      customTicketFields, ticketFormId, std::move(cb));
}

void QVKRequestProvider::getRequestById(const std::optional<std::string>& requestId,
                                        Callback<QVKRequest> cb) const {
  RequestFetchOperations::getRequestById(context_, requestId, std::move(cb));
}

void QVKRequestProvider::getAllRequests(Callback<QVKRequestsWithCommentingAgents> cb) const {
  RequestFetchOperations::getRequestsByStatus(context_, std::string(kAllStatuses), std::move(cb));
}

void QVKRequestProvider::getRequestsByStatus(const std::optional<std::string>& status,
                                             Callback<QVKRequestsWithCommentingAgents> cb) const {
  RequestFetchOperations::getRequestsByStatus(context_, status, std::move(cb));
}

void QVKRequestProvider::getCommentsWithRequestId(
    const std::optional<std::string>& requestId,
    Callback<std::vector<QVKCommentWithUser>> cb) const {
  RequestCommentOperations::getCommentsWithRequestId(context_, requestId, std::move(cb));
}

void QVKRequestProvider::getCommentsWithRequestId(
    const std::optional<std::string>& requestId,
    const std::optional<std::chrono::system_clock::time_point>& sinceDate, bool onlyAgent,
    Callback<std::vector<QVKCommentWithUser>> cb) const {
  RequestCommentOperations::getCommentsWithRequestId(context_, requestId, sinceDate, onlyAgent,
                                                     std::move(cb));
}

void QVKRequestProvider::addComment(const std::optional<std::string>& comment,
                                    const std::optional<std::string>& requestId,
                                    Callback<QVKComment> cb) const {
  RequestCommentOperations::addComment(context_, comment, requestId, std::nullopt, std::move(cb));
}

void QVKRequestProvider::addComment(
    const std::optional<std::string>& comment, const std::optional<std::string>& requestId,
    const std::optional<std::vector<QVKUploadResponse>>& attachments,
    Callback<QVKComment> cb) const {
  RequestCommentOperations::addComment(context_, comment, requestId, attachments, std::move(cb));
}

void QVKRequestProvider::getTicketFormWithIds(const std::vector<std::int64_t>& ids,
                                              Callback<TicketForms> cb) const {
  TicketFormOperations::getTicketFormWithIds(context_, ids, std::move(cb));
}

void QVKRequestProvider::getUpdatesForDevice(RequestReadTracking::UpdatesCallback cb) const {
  RequestReadTracking::getUpdatesForDevice(fetchAll_, std::move(cb));
}

}  // namespace velmaro
