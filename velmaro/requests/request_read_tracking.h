#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/request_updates.h"

namespace velmaro {

// Unread comments, from the counters the device keeps (RequestStorage) and
// refreshed from the request lists the provider fetches. Each operation opens
// the store of the current core object anew; without one, the marking and
// updating operations do nothing.
class RequestReadTracking {
 public:
  using UpdatesCallback = std::function<void(std::optional<RequestUpdates>)>;
  // Fetches every request of the user (the provider's getAllRequests);
  // answers the list, or nothing when the fetch failed.
  using FetchAll = std::function<void(
      std::function<void(std::optional<std::vector<QVKRequest>> requests)> done)>;

  // While the stored counters are fresh (an hour after the last list), the
  // answer comes from them at once on this thread. Otherwise, when
  // conversations are enabled and `fetchAll` is still there (the provider
  // lives), the requests are fetched: an empty list answers from the stored
  // counters, a non-empty one or a failure answers nothing (the fetch has
  // refreshed the counters for the next call). A provider gone meanwhile
  // ends the flow without an answer.
  static void getUpdatesForDevice(std::weak_ptr<const FetchAll> fetchAll, UpdatesCallback cb);
  static void markRequestAsRead(const std::string& requestId, std::int64_t commentCount);
  static void markRequestAsUnread(const std::string& requestId);
  // Server comment counts with the stored read counts (0 for a request not
  // stored yet), merged into the store, which is fresh for another hour.
  static void updateRequestStorageWithRequests(const std::vector<QVKRequest>& requests);

  static constexpr const char* kConversationsDisabledMessage =
      "Conversations are disabled. This feature is not available on this plan.";
};

}  // namespace velmaro
