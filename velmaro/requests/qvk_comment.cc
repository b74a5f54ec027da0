#include "velmaro/requests/qvk_comment.h"

#include "velmaro/requests/record_description.h"
#include "velmaro/requests/record_json_writer.h"
#include "velmaro/util/html_sanitizer.h"
#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/qvk_date_util.h"

namespace velmaro {

using J = JsonValueConversion;

std::optional<QVKComment> QVKComment::initWithDictionary(const boost::json::value* json) {
  if (json == nullptr || !json->is_object()) return std::nullopt;
  return initWithDictionary(json->get_object());
}

std::optional<QVKComment> QVKComment::initWithDictionary(const boost::json::object& json) {
  if (json.empty()) return std::nullopt;
  QVKComment comment;
  comment.commentId = J::identifier(json, "id");
  comment.body = J::string(json, "body");
  if (auto html = J::string(json, "html_body"))
    comment.htmlBody = HTMLSanitizer::cleanWithHtml(*html);
  comment.authorId = J::identifier(json, "author_id");
  comment.createdAt = QVKDateUtil::dateForJsonString(json.if_contains("created_at"));
  comment.requestId = J::numberText(json, "request_id");
  comment.attachments = parseAttachments(J::array(json, "attachments"));
  return comment;
}

boost::json::object QVKComment::toJson() const {
  return RecordJsonWriter()
      .put("id", commentId)
      .put("body", body)
      .put("html_body", htmlBody)
      .put("author_id", authorId)
      .put("created_at", createdAt)
      .put("request_id", requestId)
      .take();
}

std::string QVKComment::description() const {
  return RecordDescription("Comment")
      .line("commentId", commentId)
      .line("body", body)
      .line("htmlBody", htmlBody)
      .line("authorId", authorId)
      .line("createdAt", RecordJsonWriter::dateText(createdAt))
      .line("requestId", requestId)
      .line("attachments", attachments ? attachments->size() : 0)
      .text();
}

}  // namespace velmaro
