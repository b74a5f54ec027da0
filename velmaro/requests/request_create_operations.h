#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/core/provider_request.h"
#include "velmaro/core/qvk_dispatcher_response.h"
#include "velmaro/requests/custom_field.h"
#include "velmaro/requests/qvk_create_request.h"
#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_request_provider_context.h"

namespace velmaro {

// Creating a request. The callback receives the dispatcher's response; the
// success notification carries the parsed request.
class RequestCreateOperations {
 public:
  using Context = QVKRequestProviderContext;
  using CreateCallback = ProviderCallback<QVKDispatcherResponse>;

  static void createRequest(const Context& ctx, const std::optional<QVKCreateRequest>& request,
                            CreateCallback cb);
  // `attachments` are upload tokens; absent sends no "uploads" at all.
  static void createRequestWithSubject(const Context& ctx, std::optional<std::string> subject,
                                       std::optional<std::string> description,
                                       std::optional<std::vector<std::string>> tags,
                                       std::optional<std::vector<std::string>> attachments,
                                       const std::vector<CustomField>& customTicketFields,
                                       std::optional<std::int64_t> ticketFormId, CreateCallback cb);

  // The POST of a create body, with its notifications; its answer is stored
  // and counted as a usage event. The outbox sends kept requests with it.
  static ProviderRequest<QVKDispatcherResponse> submission(const Context& ctx, std::string body);
  // What a sent request's answer would have done, for one a read found the
  // service already had: the usage event, the store, the success
  // notification.
  static void arrived(const Context& ctx, const QVKRequest& request);

  // "custom_fields": the dictionaries of the fields that have a value; left
  // out for an empty list.
  static void addCustomTicketFields(boost::json::object& body,
                                    const std::vector<CustomField>& customFields);
  static void addTicketFormId(boost::json::object& body, std::optional<std::int64_t> ticketFormId);
  // The whole create body: {"request": {...}}.
  static std::string body(const std::string& subject, const std::string& description,
                          const std::vector<std::string>& tags,
                          const std::optional<std::vector<std::string>>& attachments,
                          const std::vector<CustomField>& customTicketFields,
                          std::optional<std::int64_t> ticketFormId);
};

}  // namespace velmaro
