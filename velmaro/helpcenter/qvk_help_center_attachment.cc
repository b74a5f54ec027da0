#include "velmaro/helpcenter/qvk_help_center_attachment.h"

#include <cmath>

#include "velmaro/util/json_value_conversion.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

using J = JsonValueConversion;

QVKHelpCenterAttachment QVKHelpCenterAttachment::parseAttachment(const boost::json::object& json) {
  QVKHelpCenterAttachment attachment;
  attachment.identifier = J::identifier(json, "id");
  attachment.url = J::string(json, "url");
  attachment.article_id = J::identifier(json, "article_id");
  attachment.file_name = J::string(json, "file_name");
  attachment.content_url = J::string(json, "content_url");
  attachment.content_type = J::string(json, "content_type");
  attachment.size = J::unsignedValue(json, "size");
  attachment.isInline = J::boolValue(json, "inline");
  return attachment;
}

std::vector<QVKHelpCenterAttachment> QVKHelpCenterAttachment::parseAttachments(
    const boost::json::object& json) {
  return J::parseList(json, "article_attachments", &parseAttachment);
}

std::string QVKHelpCenterAttachment::humanReadableFileSize() const {
  if (size <= 1023) return StringFormat::format("%li B", size);
  // The exponent comes from logarithms in double precision, like the
  // formatter this replaces, so results at exact powers of 1024 match it.
  const auto exponent = static_cast<int>(std::log(static_cast<double>(size)) / std::log(1024.0));
  static constexpr const char* kUnits = "KMGTPE";
  const std::string unit(1, kUnits[exponent - 1]);
  const double scaled = static_cast<double>(size) / std::pow(2.0, 10 * exponent);
  return StringFormat::format("%.1f %@B", scaled, unit);
}

}  // namespace velmaro
