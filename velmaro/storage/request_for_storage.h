#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <boost/json/object.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/requests/qvk_request.h"

namespace velmaro {

// What the device remembers of one request: how many comments it had when
// last fetched and how many of them the user has read. Their difference is
// the request's unread comments.
class RequestForStorage {
 public:
  // Records come from the factories, from decoding and from the store.
  RequestForStorage() = delete;
  RequestForStorage(std::string requestId, std::int64_t commentCount,
                    std::int64_t readCommentCount);

  // The request's id and comment count (0 when it has none), and the given
  // read count.
  static RequestForStorage createFromRequest(const QVKRequest& request,
                                             std::int64_t readCommentCount);
  static RequestForStorage createFromNewRequest(const QVKRequest& request) {
    return createFromRequest(request, 0);
  }

  // Keyed coding with the keys "requestId", "commentCount" and
  // "readCommentCount"; a missing key or a value of another type is an error.
  static quorvel::platform::Result<RequestForStorage> initFrom(const boost::json::object& json);
  boost::json::object encode() const;

  // Both counters move together, so the unread difference stays: the user
  // posted a comment of their own. Overflow is a programming error and ends
  // the process.
  void incrementCommentCounts();

  const std::string& requestId() const { return requestId_; }
  std::int64_t commentCount() const { return commentCount_; }
  std::int64_t readCommentCount() const { return readCommentCount_; }
  void setCommentCount(std::int64_t count) { commentCount_ = count; }
  void setReadCommentCount(std::int64_t count) { readCommentCount_ = count; }

  bool operator==(const RequestForStorage&) const = default;

 private:
  std::string requestId_;
  std::int64_t commentCount_;
  std::int64_t readCommentCount_;
};

using QVKRequestForStorage = RequestForStorage;

}  // namespace velmaro
