#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/quorvel.h"
#include "velmaro/core/qvk_dispatcher_response.h"
#include "velmaro/requests/qvk_create_request.h"
#include "velmaro/requests/qvk_request_provider_context.h"
#include "velmaro/requests/qvk_request_provider_errors.h"
#include "velmaro/requests/qvk_requests_with_commenting_agents.h"
#include "velmaro/requests/request_comment_operations.h"
#include "velmaro/requests/request_fetch_operations.h"
#include "velmaro/requests/request_read_tracking.h"
#include "velmaro/requests/ticket_form_operations.h"

namespace velmaro {

// The end user's support requests: create them, list them by status, fetch
// one, read and add comments, fetch ticket forms, and know which requests
// have comments the user has not read.
//
// Each operation validates its arguments, asks the account's feature switch
// where one applies, sends one request through the provider core and answers
// its callback once on the core object's main queue, with the notifications
// of the request family on the default centre. Two answers come at once on
// the calling thread instead: a ticket-form cache hit and updates computed
// from fresh stored counters. A call in flight holds a copy of the context,
// never the provider, so a provider may be destroyed with calls in flight
// (getUpdatesForDevice then ends without an answer, as it needs the provider
// to fetch). More than one thread may call a provider's operations.
class QVKRequestProvider {
 public:
  using Error = quorvel::platform::Error;
  template <class R>
  using Callback = ProviderCallback<R>;
  using TicketForms = TicketFormOperations::Forms;

  static constexpr const char* kAllStatuses = RequestFetchOperations::kAllStatuses;

  explicit QVKRequestProvider(std::shared_ptr<quorvel::Quorvel> quorvel);
  QVKRequestProvider(const QVKRequestProvider&) = delete;
  QVKRequestProvider& operator=(const QVKRequestProvider&) = delete;

  // The callback receives the dispatcher's response; the success
  // notification carries {"request": the parsed request}.
  void createRequest(const std::optional<QVKCreateRequest>& request,
                     Callback<QVKDispatcherResponse> cb) const;
  void createRequestWithSubject(std::optional<std::string> subject,
                                std::optional<std::string> description,
                                std::optional<std::vector<std::string>> tags,
                                std::optional<std::vector<std::string>> attachments,
                                const std::vector<CustomField>& customTicketFields,
                                std::optional<std::int64_t> ticketFormId,
                                Callback<QVKDispatcherResponse> cb) const;

  void getRequestById(const std::optional<std::string>& requestId, Callback<QVKRequest> cb) const;
  void getAllRequests(Callback<QVKRequestsWithCommentingAgents> cb) const;
  void getRequestsByStatus(const std::optional<std::string>& status,
                           Callback<QVKRequestsWithCommentingAgents> cb) const;

  void getCommentsWithRequestId(const std::optional<std::string>& requestId,
                                Callback<std::vector<QVKCommentWithUser>> cb) const;
  void getCommentsWithRequestId(
      const std::optional<std::string>& requestId,
      const std::optional<std::chrono::system_clock::time_point>& sinceDate, bool onlyAgent,
      Callback<std::vector<QVKCommentWithUser>> cb) const;
  void addComment(const std::optional<std::string>& comment,
                  const std::optional<std::string>& requestId, Callback<QVKComment> cb) const;
  void addComment(const std::optional<std::string>& comment,
                  const std::optional<std::string>& requestId,
                  const std::optional<std::vector<QVKUploadResponse>>& attachments,
                  Callback<QVKComment> cb) const;

  void getTicketFormWithIds(const std::vector<std::int64_t>& ids, Callback<TicketForms> cb) const;

  // Unread tracking over the device's request store.
  void getUpdatesForDevice(RequestReadTracking::UpdatesCallback cb) const;
  static RequestUpdates calculateRequestUpdates(const std::vector<RequestForStorage>& requests) {
    return RequestUpdates::calculateRequestUpdates(requests);
  }
  void markRequestAsRead(const std::string& requestId, std::int64_t commentCount) const {
    RequestReadTracking::markRequestAsRead(requestId, commentCount);
  }
  void markRequestAsUnread(const std::string& requestId) const {
    RequestReadTracking::markRequestAsUnread(requestId);
  }
  void updateRequestStorageWithRequests(const std::vector<QVKRequest>& requests) const {
    RequestReadTracking::updateRequestStorageWithRequests(requests);
  }

  static Error accountRestrictionError() {
    return QVKRequestProviderErrors::accountRestrictionError();
  }
  static Error ticketFormsNotAvailableError() {
    return QVKRequestProviderErrors::ticketFormsNotAvailableError();
  }
  static Error ticketFormsEmptyListError() {
    return QVKRequestProviderErrors::ticketFormsEmptyListError();
  }

  const std::shared_ptr<quorvel::Quorvel>& quorvel() const { return quorvel_; }

  // With an outbox, a new request or reply the service did not get is kept
  // and sent later, and its callback answered with OutboxErrors::queued; the
  // default (none) answers such calls with their failure. Set it before
  // calling, from the thread that makes the calls.
  void setOutbox(std::shared_ptr<RequestOutbox> outbox) { context_.setOutbox(std::move(outbox)); }

 private:
  std::shared_ptr<quorvel::Quorvel> quorvel_;
  QVKRequestProviderContext context_;
  // Lives as long as the provider: getUpdatesForDevice holds it weakly.
  std::shared_ptr<const RequestReadTracking::FetchAll> fetchAll_;
};

}  // namespace velmaro
