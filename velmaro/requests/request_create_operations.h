#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/core/qvk_dispatcher_response.h"
#include "velmaro/requests/custom_field.h"
#include "velmaro/requests/qvk_create_request.h"
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
