#include "velmaro/storage/request_for_storage.h"

#include <cstdio>
#include <cstdlib>

#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

RequestForStorage::RequestForStorage(std::string requestId, std::int64_t commentCount,
                                     std::int64_t readCommentCount)
    : requestId_(std::move(requestId)),
      commentCount_(commentCount),
      readCommentCount_(readCommentCount) {}

RequestForStorage RequestForStorage::createFromRequest(const QVKRequest& request,
                                                       std::int64_t readCommentCount) {
  return {request.requestId.value_or(""), request.commentCount.value_or(0), readCommentCount};
}

void RequestForStorage::incrementCommentCounts() {
  if (__builtin_add_overflow(commentCount_, 1, &commentCount_) ||
      __builtin_add_overflow(readCommentCount_, 1, &readCommentCount_)) {
    std::fputs("RequestForStorage: comment count overflow\n", stderr);
    std::abort();
  }
}

boost::json::object RequestForStorage::encode() const {
  return {{"requestId", requestId_},
          {"commentCount", commentCount_},
          {"readCommentCount", readCommentCount_}};
}

using quorvel::platform::Result;

Result<RequestForStorage> RequestForStorage::initFrom(const boost::json::object& json) {
  // The container points into the document, which must outlive it.
  const boost::json::value document(json);
  QUORVEL_ASSIGN_OR_RETURN(auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(auto requestId, root.decodeString("requestId"));
  QUORVEL_ASSIGN_OR_RETURN(auto commentCount, root.decodeInt64("commentCount"));
  QUORVEL_ASSIGN_OR_RETURN(auto readCommentCount, root.decodeInt64("readCommentCount"));
  return RequestForStorage(std::move(requestId), commentCount, readCommentCount);
}

}  // namespace velmaro
