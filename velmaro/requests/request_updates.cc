#include "velmaro/requests/request_updates.h"

#include <cstdint>
#include <numeric>

namespace velmaro {

RequestUpdates RequestUpdates::calculateRequestUpdates(
    const std::vector<RequestForStorage>& requests) {
  std::map<std::string, std::int64_t> updates;
  for (const auto& request : requests) {
    if (request.commentCount() == request.readCommentCount()) continue;
    std::int64_t unread = 0;
    if (__builtin_sub_overflow(request.commentCount(), request.readCommentCount(), &unread)) {
      // Counters no service sends; saturate rather than wrap.
      unread = request.commentCount() > 0 ? INT64_MAX : INT64_MIN;
    }
    // Stored ids mostly come in order: the end is then the right hint.
    updates.insert_or_assign(updates.end(), request.requestId(), unread);
  }
  return RequestUpdates(std::move(updates));
}

std::int64_t RequestUpdates::totalUpdates() const {
  return std::accumulate(requestUpdates_.begin(), requestUpdates_.end(), std::int64_t{0},
                         [](std::int64_t sum, const auto& entry) { return sum + entry.second; });
}

bool RequestUpdates::isRequestUnread(const std::string& requestId) const {
  const auto it = requestUpdates_.find(requestId);
  return it != requestUpdates_.end() && it->second > 0;
}

}  // namespace velmaro
