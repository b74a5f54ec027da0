#include "velmaro/requests/qvk_request.h"

#include "velmaro/requests/record_description.h"
#include "velmaro/requests/record_json_writer.h"
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_date_util.h"
#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

// A list of ids read past JSON null: null is an empty list, a missing key or
// a value that is not an array none, elements that are not numbers skipped.
std::optional<std::vector<std::int64_t>> idList(const boost::json::object& json,
                                                std::string_view key) {
  const auto value = QVKJsonUtil::cleanJSONArrayVal(json, key);
  if (!value || !value->is_array()) return std::nullopt;
  std::vector<std::int64_t> ids;
  for (const auto& element : value->get_array()) {
    if (auto id = J::identifier(&element)) ids.push_back(*id);
  }
  return ids;
}

std::optional<QVKRequest::TimePoint> date(const boost::json::object& json, std::string_view key) {
  return QVKDateUtil::dateForJsonString(json.if_contains(key));
}

}  // namespace

QVKRequest QVKRequest::initWithDict(const boost::json::object& json) {
  QVKRequest request;
  request.requestId = J::numberText(json, "id");
  request.requesterId = J::identifier(json, "requester_id");
  request.status = J::string(json, "status");
  request.subject = J::string(json, "subject");
  request.requestDescription = J::string(json, "description");
  request.type = J::string(json, "type");
  request.createdAt = date(json, "created_at");
  request.updateAt = date(json, "updated_at");
  request.publicUpdatedAt = date(json, "public_updated_at");
  request.commentCount = J::number(json, "comment_count");
  request.firstComment = QVKComment::initWithDictionary(json.if_contains("first_comment"));
  request.lastComment = QVKComment::initWithDictionary(json.if_contains("last_comment"));
  request.collaboratingIds = idList(json, "collaborator_ids");
  request.commentingAgentsIds = idList(json, "last_commenting_agents_ids");
  request.customFields =
      QVKTicketFormUtilities::parseArrayFromDictionary<CustomField>(json, "custom_fields");
  return request;
}

boost::json::array QVKRequest::getCustomFieldsAsJSON(const std::vector<CustomField>& fields) {
  boost::json::array json;
  json.reserve(fields.size());
  for (const auto& field : fields) json.emplace_back(field.customFieldDictionary());
  return json;
}

boost::json::object QVKRequest::toJson() const {
  RecordJsonWriter writer;
  writer.put("id", requestId).put("requester_id", requesterId).put("status", status);
  writer.put("subject", subject).put("description", requestDescription).put("type", type);
  writer.put("collaborator_ids", collaboratingIds);
  writer.put("last_commenting_agents_ids", commentingAgentsIds);
  writer.put("created_at", createdAt).put("updated_at", updateAt);
  writer.put("public_updated_at", publicUpdatedAt).put("comment_count", commentCount);
  if (firstComment) writer.put("first_comment", firstComment->toJson());
  if (lastComment) writer.put("last_comment", lastComment->toJson());
  writer.put("custom_fields", getCustomFieldsAsJSON(customFields));
  return writer.take();
}

std::string QVKRequest::description() const {
  return RecordDescription("QVKRequest")
      .line("requestId", requestId)
      .line("requesterId", requesterId)
      .line("subject", subject)
      .line("description", requestDescription)
      .line("createdAt", RecordJsonWriter::dateText(createdAt))
      .line("updatedAt", RecordJsonWriter::dateText(updateAt))
      .line("commentCount", commentCount)
      .line("type", type)
      .text();
}

}  // namespace velmaro
