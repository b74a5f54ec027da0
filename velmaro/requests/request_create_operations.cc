#include "velmaro/requests/request_create_operations.h"

#include <memory>

#include <boost/json/serialize.hpp>

#include "quorvel/anonymous_identity.h"
#include "quorvel/quorvel.h"
#include "velmaro/blips/request_blips.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/core/support.h"
#include "velmaro/requests/qvk_create_request_utilities.h"
#include "velmaro/requests/request_notifications.h"
#include "velmaro/settings/qvk_contact_us_settings_provider.h"
#include "velmaro/storage/request_storage.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_device_info.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro {

namespace {

// Remembers the new request, its own first comment counted as read.
void storeCreatedRequest(const QVKRequest& request) {
  const auto core = quorvel::Quorvel::instance();
  if (!core) return;
  RequestStorage::initWithQuorvel(*core).storeRequest(
      RequestForStorage::createFromRequest(request, request.commentCount.value_or(0)));
}

// The create answer: the request, with the "last_comment" found at the top
// level of the answer (a reply's answer has it inside "request").
QVKRequest createdRequest(const QVKDispatcherResponse& response) {
  const auto json = AnswerParsing::jsonObject(response.data);
  auto request = QVKRequest::initWithDict(JsonValueConversion::objectAt(json, "request"));
  request.lastComment = QVKComment::initWithDictionary(json.if_contains("last_comment"));
  return request;
}

}  // namespace

void RequestCreateOperations::createRequest(const Context& ctx,
                                            const std::optional<QVKCreateRequest>& request,
                                            CreateCallback cb) {
  if (ctx.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("request, callback", request, cb),
          "-[QVKRequestProvider createRequest:withCallback:]", cb, "callback")) {
    return;
  }
  const auto support = Support::instance();
  createRequestWithSubject(
      ctx, request->subject, request->requestDescription, request->tags, request->attachments(),
      QVKCreateRequestUtilities::customTicketFieldsWithConfig(support.get(), *request),
      QVKCreateRequestUtilities::ticketFormIdWithConfig(support.get(), *request), std::move(cb));
}

void RequestCreateOperations::addCustomTicketFields(boost::json::object& body,
                                                    const std::vector<CustomField>& customFields) {
  if (customFields.empty()) return;
  boost::json::array fields;
  for (const auto& field : customFields) {
    if (field.value()) fields.emplace_back(field.customFieldDictionary());
  }
  body["custom_fields"] = std::move(fields);
}

void RequestCreateOperations::addTicketFormId(boost::json::object& body,
                                              std::optional<std::int64_t> ticketFormId) {
  if (ticketFormId) body["ticket_form_id"] = *ticketFormId;
}

std::string RequestCreateOperations::body(
    const std::string& subject, const std::string& description,
    const std::vector<std::string>& tags,
    const std::optional<std::vector<std::string>>& attachments,
    const std::vector<CustomField>& customTicketFields, std::optional<std::int64_t> ticketFormId) {
  boost::json::object request;
  addCustomTicketFields(request, customTicketFields);
  addTicketFormId(request, ticketFormId);
  request["metadata"] = boost::json::object{{"sdk", QVKDeviceInfo::deviceInfoDictionary()}};
  boost::json::object comment{{"body", description}};
  if (attachments) {
    comment["uploads"] = boost::json::array(attachments->begin(), attachments->end());
  }
  request["comment"] = std::move(comment);
  request["tags"] = boost::json::array(tags.begin(), tags.end());
  request["subject"] = subject;
  return boost::json::serialize(boost::json::object{{"request", std::move(request)}});
}

ProviderRequest<QVKDispatcherResponse> RequestCreateOperations::submission(const Context& ctx,
                                                                           std::string body) {
  ProviderRequest<QVKDispatcherResponse> request;
  request.path = "/api/mobile/requests.json?include=last_comment";
  request.httpMethod = "POST";
  request.body = std::move(body);
  const auto identity = ctx.core() ? ctx.core()->identity() : nullptr;
  if (const auto* anonymous = dynamic_cast<const quorvel::AnonymousIdentity*>(identity.get())) {
    request.headers["Mobile-Sdk-Identity"] = anonymous->guid();
  }
  request.starting = QVKAPI_RequestSubmissionStarting;
  request.success = QVKAPI_RequestSubmissionSuccess;
  request.failures = {QVKAPI_RequestSubmissionError};
  auto created = std::make_shared<QVKRequest>();
  request.parse =
      [created](
          QVKDispatcherResponse response) -> quorvel::platform::Result<QVKDispatcherResponse> {
    *created = createdRequest(response);
    RequestBlips::requestCreatedBlip(created->requestId.value_or(""));
    storeCreatedRequest(*created);
    return response;
  };
  request.successInfo = [created](const QVKDispatcherResponse&) {
    return quorvel::platform::UserInfo{{"request", *created}};
  };
  return request;
}

void RequestCreateOperations::arrived(const Context& ctx, const QVKRequest& request) {
  RequestBlips::requestCreatedBlip(request.requestId.value_or(""));
  storeCreatedRequest(request);
  ctx.postToNotificationCenterOnMainThread(QVKAPI_RequestSubmissionSuccess, std::nullopt,
                                           {{"request", request}});
}

void RequestCreateOperations::createRequestWithSubject(
    const Context& ctx, std::optional<std::string> subject, std::optional<std::string> description,
    std::optional<std::vector<std::string>> tags,
    std::optional<std::vector<std::string>> attachments,
    const std::vector<CustomField>& customTicketFields, std::optional<std::int64_t> ticketFormId,
    CreateCallback cb) {
  auto tokens = attachments.value_or(std::vector<std::string>{});
  auto body = [subject = subject.value_or(""), description = description.value_or(""),
               tags = tags.value_or(std::vector<std::string>{}),
               attachments = std::move(attachments), customTicketFields,
               ticketFormId](const std::vector<std::string>& accountTags) {
    auto merged = tags;
    merged.insert(merged.end(), accountTags.begin(), accountTags.end());
    return RequestCreateOperations::body(subject, description, merged, attachments,
                                         customTicketFields, ticketFormId);
  };
  QVKContactUsSettingsProvider::getContactUsSettingsWithCallback(
      [ctx, body = std::move(body), subject = subject.value_or(""),
       description = description.value_or(""), tokens = std::move(tokens),
       cb = std::move(cb)](std::optional<ContactUsSettings> settings) {
        auto request =
            submission(ctx, body(settings ? settings->tags() : std::vector<std::string>{}));
        if (ctx.keptInOutbox(request, cb,
                             OutboxEntry::newRequest(subject, description, *request.body, tokens)))
          return;
        ctx.send(std::move(request), cb);
      });
}

}  // namespace velmaro
