#include "velmaro/requests/request_read_tracking.h"

#include "quorvel/core_logger.h"
#include "quorvel/quorvel.h"
#include "velmaro/requests/qvk_request_provider_context.h"
#include "velmaro/storage/request_storage.h"

namespace velmaro {

namespace {

std::optional<RequestStorage> currentStorage() {
  const auto core = quorvel::Quorvel::instance();
  if (!core) return std::nullopt;
  return RequestStorage::initWithQuorvel(*core);
}

}  // namespace

void RequestReadTracking::getUpdatesForDevice(std::weak_ptr<const FetchAll> fetchAll,
                                              UpdatesCallback cb) {
  auto storage = currentStorage();
  if (!storage) {
    if (cb) cb(std::nullopt);
    return;
  }
  if (!storage->isRequestCacheExpired()) {
    if (cb) cb(RequestUpdates::calculateRequestUpdates(storage->getRequests()));
    return;
  }
  if (!quorvel::Quorvel::instance()) return;
  QVKRequestProviderContext::conversationsEnabled([fetchAll, cb](bool enabled) {
    if (!enabled) {
      quorvel::CoreLogger::debug(kConversationsDisabledMessage);
      if (cb) cb(std::nullopt);
      return;
    }
    const auto fetch = fetchAll.lock();
    if (!fetch) return;
    (*fetch)([cb](std::optional<std::vector<QVKRequest>> requests) {
      if (!cb) return;
      if (!requests || !requests->empty()) {
        cb(std::nullopt);
        return;
      }
      auto stored = currentStorage();
      if (!stored) {
        cb(std::nullopt);
        return;
      }
      cb(RequestUpdates::calculateRequestUpdates(stored->getRequests()));
    });
  });
}

void RequestReadTracking::markRequestAsRead(const std::string& requestId,
                                            std::int64_t commentCount) {
  auto storage = currentStorage();
  if (!storage) return;
  auto record = storage->getRequestForId(requestId);
  if (!record) {
    quorvel::CoreLogger::error("Request with the id: " + requestId +
                               " doesn't not exist, can't mark as read.");
    return;
  }
  record->setReadCommentCount(commentCount);
  record->setCommentCount(commentCount);
  storage->storeRequest(record);
}

void RequestReadTracking::markRequestAsUnread(const std::string& requestId) {
  auto storage = currentStorage();
  if (!storage) return;
  auto record = storage->getRequestForId(requestId);
  if (!record) {
    quorvel::CoreLogger::error("Request with the id: " + requestId +
                               " doesn't not exist, can't mark as unread.");
    return;
  }
  std::int64_t count = 0;
  if (__builtin_add_overflow(record->commentCount(), 1, &count)) return;
  record->setCommentCount(count);
  storage->storeRequest(record);
}

void RequestReadTracking::updateRequestStorageWithRequests(
    const std::vector<QVKRequest>& requests) {
  auto storage = currentStorage();
  if (!storage) return;
  // Built as new (read counter 0); the store puts back the read counter of
  // each request it holds, in the same read-modify-write.
  std::vector<RequestForStorage> records;
  records.reserve(requests.size());
  for (const auto& request : requests) {
    records.push_back(RequestForStorage::createFromNewRequest(request));
  }
  storage->storeRequestsKeepingReadCountsAndResetCacheTime(std::move(records));
}

}  // namespace velmaro
