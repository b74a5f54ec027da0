#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "velmaro/requests/custom_field.h"
#include "velmaro/requests/qvk_comment.h"

namespace velmaro {

// One support request as the service describes it. Every value is read past
// JSON null; a missing or mistyped value leaves its field empty.
struct QVKRequest {
  using TimePoint = std::chrono::system_clock::time_point;

  // The id as the service sends it; a numeric id becomes its decimal text.
  std::optional<std::string> requestId;
  std::optional<std::int64_t> requesterId;
  std::optional<std::string> status;
  std::optional<std::string> subject;
  std::optional<std::string> requestDescription;
  std::optional<std::string> type;
  std::optional<TimePoint> createdAt;
  std::optional<TimePoint> updateAt;
  std::optional<TimePoint> publicUpdatedAt;
  std::optional<std::int64_t> commentCount;
  std::optional<QVKComment> firstComment;
  std::optional<QVKComment> lastComment;
  // JSON null reads as an empty list, a missing key as none.
  std::optional<std::vector<std::int64_t>> collaboratingIds;
  std::optional<std::vector<std::int64_t>> commentingAgentsIds;
  std::vector<CustomField> customFields;

  static QVKRequest initWithDict(const boost::json::object& json);
  // Absent values leave their keys out; comments are written with their own
  // toJson (attachments are lost), dates as wire timestamps.
  boost::json::object toJson() const;
  static boost::json::array getCustomFieldsAsJSON(const std::vector<CustomField>& fields);
  std::string description() const;
};

}  // namespace velmaro
