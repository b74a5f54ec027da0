#include "velmaro/requests/qvk_attachment.h"

#include "velmaro/requests/record_description.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

// A single-precision reading of a number, as the image size is sent; 0 when
// missing or not a number.
double floatValue(const boost::json::object& json, std::string_view key) {
  const auto* value = json.if_contains(key);
  if (value == nullptr || !value->is_number()) return 0;
  return static_cast<double>(static_cast<float>(value->to_number<double>()));
}

}  // namespace

QVKAttachment QVKAttachment::parse(const boost::json::object& json, int depth) {
  QVKAttachment attachment;
  attachment.attachmentId = J::identifier(json, "id");
  attachment.filename = J::string(json, "file_name");
  attachment.contentURLString = J::string(json, "content_url");
  attachment.contentType = J::string(json, "content_type");
  attachment.size = J::number(json, "size");
  attachment.imageDimension = {floatValue(json, "width"), floatValue(json, "height")};
  if (depth < kMaxThumbnailDepth) {
    attachment.thumbnails = parseList(J::array(json, "thumbnails"), depth + 1);
  }
  return attachment;
}

std::optional<std::vector<QVKAttachment>> QVKAttachment::parseList(const boost::json::array* array,
                                                                   int depth) {
  if (array == nullptr || array->empty()) return std::nullopt;
  std::vector<QVKAttachment> attachments;
  for (const auto& element : *array) {
    if (!element.is_object() || element.get_object().empty()) continue;
    attachments.push_back(parse(element.get_object(), depth));
  }
  return attachments;
}

std::optional<std::vector<QVKAttachment>> QVKAttachment::parseThumbnails(
    const boost::json::array* array) {
  return parseList(array, 1);
}

std::string QVKAttachment::description() const {
  return RecordDescription("Attachment")
      .line("attachmentId", attachmentId)
      .line("filename", filename)
      .line("contentURLString", contentURLString)
      .line("contentType", contentType)
      .line("size", size)
      .line("width", imageDimension.width)
      .line("height", imageDimension.height)
      .text();
}

}  // namespace velmaro
