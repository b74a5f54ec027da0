#pragma once

#include <optional>
#include <string>

#include <boost/json/object.hpp>

#include "velmaro/requests/qvk_attachment.h"

namespace velmaro {

// What the service answers for an uploaded file: the token that a create or
// comment call sends in "uploads", and the attachment made of the file. Both
// are absent when the answer has no "upload" dictionary.
struct QVKUploadResponse {
  std::optional<std::string> uploadToken;
  std::optional<QVKAttachment> attachment;

  static QVKUploadResponse initWithDict(const boost::json::object& json);
};

}  // namespace velmaro
