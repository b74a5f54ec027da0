#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/storage/request_for_storage.h"
#include "velmaro/storage/request_storage_protocol.h"

namespace quorvel {
class Quorvel;
}

namespace velmaro {

// The device's record of the user's requests and their read comments: one
// dictionary from request id to {"comment_count", "read_comment_count"} under
// one key of the session store, and the moment until which that set counts
// as fresh. No copy is kept here: every operation reads the store afresh,
// and every write is one atomic read-modify-write of the dictionary, so
// stores made for each call, in this process or in others sharing the data
// folder, agree and never lose each other's entries. Safe from any thread.
class RequestStorage {
 public:
  static constexpr const char* kRequestStorageKey = "quorvel.support.request.storage";
  static constexpr const char* kCacheTimestampKey = "quorvel.support.request.cache.timestamp";
  static constexpr const char* kCommentCountKey = "comment_count";
  static constexpr const char* kReadCommentCountKey = "read_comment_count";
  static constexpr double kCacheValidityInterval = 3600.0;

  // Seconds since 1970; replaceable so that tests can stand still in time.
  using Clock = std::function<double()>;

  RequestStorage() = delete;
  explicit RequestStorage(std::shared_ptr<RequestStorageProtocol> sessionStore,
                          Clock clock = systemClock());
  // Over the core object's session store.
  static RequestStorage initWithQuorvel(const quorvel::Quorvel& quorvel);

  // The stored ids, in the dictionary's order.
  std::vector<std::string> getRequestIds() const;
  // One record per entry whose value is a dictionary of integers.
  std::vector<RequestForStorage> getRequests() const;
  std::optional<RequestForStorage> getRequestForId(std::string_view requestId) const;

  // Sets the record's entry; false, touching nothing, without a record.
  bool storeRequest(const std::optional<RequestForStorage>& request);
  // Merges the records into the store, then marks the set fresh for an
  // hour; when the records cannot be written the stamp stays as it was.
  bool storeRequestsAndResetCacheTime(const std::vector<RequestForStorage>& requests);
  // As storeRequestsAndResetCacheTime, but a record whose id has a record
  // stored keeps the stored read counter: the fetched list's counters merged
  // in one read-modify-write of the store, which is what a list call costs.
  bool storeRequestsKeepingReadCountsAndResetCacheTime(std::vector<RequestForStorage> requests);
  // True when no stamp is stored or its moment has passed.
  bool isRequestCacheExpired() const;

  double cacheValidityInterval() const { return kCacheValidityInterval; }
  const std::shared_ptr<RequestStorageProtocol>& sessionStore() const { return sessionStore_; }

  static Clock systemClock();

 private:
  boost::json::object storedDictionary() const;
  bool mergeEntries(std::vector<RequestForStorage> requests, bool keepReadCounts);
  bool resetCacheTime(double now);

  std::shared_ptr<RequestStorageProtocol> sessionStore_;
  Clock clock_;
};

using QVKRequestStorage = RequestStorage;

}  // namespace velmaro
