#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "velmaro/storage/request_for_storage.h"

namespace velmaro {

// Which stored requests have comments the user has not read, and how many:
// for every request whose two counters differ, comments minus read comments
// (negative when more were read than counted; nothing is clamped).
class RequestUpdates {
 public:
  RequestUpdates() = delete;
  // The one way to make one: from the stored records, in order (a later
  // record with the same id wins).
  static RequestUpdates calculateRequestUpdates(const std::vector<RequestForStorage>& requests);

  const std::map<std::string, std::int64_t>& requestUpdates() const { return requestUpdates_; }
  // The sum of every entry; 0 when there is none.
  std::int64_t totalUpdates() const;
  // True for an entry above 0.
  bool isRequestUnread(const std::string& requestId) const;
  // True when there is any entry, even a negative one.
  bool hasUpdatedRequests() const { return !requestUpdates_.empty(); }

 private:
  explicit RequestUpdates(std::map<std::string, std::int64_t> updates)
      : requestUpdates_(std::move(updates)) {}
  std::map<std::string, std::int64_t> requestUpdates_;
};

using QVKRequestUpdates = RequestUpdates;

}  // namespace velmaro
