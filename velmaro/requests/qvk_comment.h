#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/requests/qvk_attachment.h"

namespace velmaro {

// One comment of a request.
struct QVKComment {
  std::optional<std::int64_t> commentId;
  std::optional<std::string> body;
  // Sanitized (void elements closed) when read.
  std::optional<std::string> htmlBody;
  std::optional<std::int64_t> authorId;
  std::optional<std::chrono::system_clock::time_point> createdAt;
  std::optional<std::string> requestId;
  std::optional<std::vector<QVKAttachment>> attachments;

  // No comment for a missing value, JSON null, a value that is not an object
  // or an object without entries.
  static std::optional<QVKComment> initWithDictionary(const boost::json::value* json);
  static std::optional<QVKComment> initWithDictionary(const boost::json::object& json);
  // Nothing for a missing or empty array; otherwise one attachment per
  // non-empty object element, in server order.
  static std::optional<std::vector<QVKAttachment>> parseAttachments(
      const boost::json::array* array) {
    return QVKAttachment::parseList(array, 0);
  }

  // "id", "body", "html_body", "author_id", "created_at", "request_id";
  // absent values are left out and attachments are not written.
  boost::json::object toJson() const;
  std::string description() const;
};

}  // namespace velmaro
