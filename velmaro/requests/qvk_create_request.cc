#include "velmaro/requests/qvk_create_request.h"

#include "velmaro/requests/record_description.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKCreateRequest QVKCreateRequest::initWithDict(const boost::json::object& json) {
  QVKCreateRequest request;
  request.tags = J::stringArray(json, "tags").value_or(std::vector<std::string>{});
  request.subject = J::string(json, "subject");
  request.requestDescription = J::string(json, "request_description");
  if (const auto* tokens = J::array(json, "attachments")) request.setAttachments(*tokens);
  request.customFields = J::parseList(json, "custom_fields", &CustomField::initWithDictionary);
  return request;
}

std::optional<std::vector<std::string>> QVKCreateRequest::attachments() const {
  if (!attachmentsAlias) return std::nullopt;
  std::vector<std::string> tokens;
  tokens.reserve(attachmentsAlias->size());
  for (const auto& upload : *attachmentsAlias) {
    if (upload.uploadToken) tokens.push_back(*upload.uploadToken);
  }
  return tokens;
}

void QVKCreateRequest::setAttachments(const std::vector<std::string>& tokens) {
  attachmentsAlias.emplace();
  for (const auto& token : tokens) attachmentsAlias->push_back({token, std::nullopt});
}

void QVKCreateRequest::setAttachments(const boost::json::array& tokens) {
  attachmentsAlias.emplace();
  for (const auto& element : tokens) {
    if (auto token = J::numberText(&element)) attachmentsAlias->push_back({*token, std::nullopt});
  }
}

std::string QVKCreateRequest::description() const {
  boost::json::array fields;
  for (const auto& field : customFields) fields.emplace_back(field.customFieldDictionary());
  return RecordDescription("Request")
      .line("subject", subject)
      .line("tags", tags)
      .line("requestDescription", requestDescription)
      .line("attachments", attachments())
      .line("customFields", boost::json::value(std::move(fields)))
      .text();
}

}  // namespace velmaro
