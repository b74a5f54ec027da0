#include "velmaro/requests/qvk_upload_response.h"

#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

QVKUploadResponse QVKUploadResponse::initWithDict(const boost::json::object& json) {
  QVKUploadResponse response;
  const auto* upload = json.if_contains("upload");
  if (upload == nullptr || !upload->is_object()) return response;
  response.uploadToken = J::string(upload->get_object(), "token");
  if (const auto* attachment = upload->get_object().if_contains("attachment");
      attachment != nullptr && attachment->is_object()) {
    response.attachment = QVKAttachment::initWithDict(attachment->get_object());
  }
  return response;
}

}  // namespace velmaro
