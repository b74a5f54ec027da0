#include "velmaro/storage/request_storage.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "quorvel/core_logger.h"
#include "quorvel/platform/duration_formatter.h"
#include "quorvel/quorvel.h"
#include "velmaro/storage/session_store_backend.h"

namespace velmaro {

namespace {

// The dictionary under `value`, or an empty one when there is none or it is
// of another kind.
boost::json::object dictionaryOf(std::optional<boost::json::value>&& value) {
  if (!value || !value->is_object()) return {};
  return std::move(value->get_object());
}

// An entry's counters: only a dictionary whose values are all integers is a
// record; a missing counter is 0.
std::optional<RequestForStorage> recordOf(std::string_view requestId,
                                          const boost::json::value& entry) {
  if (!entry.is_object()) return std::nullopt;
  std::int64_t counts[2] = {0, 0};
  for (const auto& [key, number] : entry.get_object()) {
    // Boost.JSON reads every integer that fits 64 signed bits as int64.
    if (!number.is_int64()) return std::nullopt;
    if (key == RequestStorage::kCommentCountKey) counts[0] = number.get_int64();
    if (key == RequestStorage::kReadCommentCountKey) counts[1] = number.get_int64();
  }
  return RequestForStorage(std::string(requestId), counts[0], counts[1]);
}

boost::json::object entryOf(const RequestForStorage& request) {
  return {{RequestStorage::kCommentCountKey, request.commentCount()},
          {RequestStorage::kReadCommentCountKey, request.readCommentCount()}};
}

}  // namespace

RequestStorage::RequestStorage(std::shared_ptr<RequestStorageProtocol> sessionStore, Clock clock)
    : sessionStore_(std::move(sessionStore)), clock_(std::move(clock)) {}

RequestStorage RequestStorage::initWithQuorvel(const quorvel::Quorvel& quorvel) {
  return RequestStorage(std::make_shared<SessionStoreBackend>(quorvel.storeModule().sessionStore));
}

RequestStorage::Clock RequestStorage::systemClock() {
  return [] {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
  };
}

boost::json::object RequestStorage::storedDictionary() const {
  return dictionaryOf(sessionStore_->value(kRequestStorageKey));
}

std::vector<std::string> RequestStorage::getRequestIds() const {
  std::vector<std::string> ids;
  for (const auto& entry : storedDictionary()) ids.emplace_back(entry.key());
  return ids;
}

std::vector<RequestForStorage> RequestStorage::getRequests() const {
  // Read in place: a copy of a dictionary of a thousand requests cost more
  // than the records made from it.
  std::vector<RequestForStorage> requests;
  sessionStore_->read(kRequestStorageKey, [&](const boost::json::value* stored) {
    if (stored == nullptr || !stored->is_object()) return;
    requests.reserve(stored->get_object().size());
    for (const auto& entry : stored->get_object()) {
      if (auto record = recordOf(entry.key(), entry.value()))
        requests.push_back(std::move(*record));
    }
  });
  return requests;
}

std::optional<RequestForStorage> RequestStorage::getRequestForId(std::string_view requestId) const {
  const auto stored = storedDictionary();
  const auto* entry = stored.if_contains(requestId);
  if (entry == nullptr) return std::nullopt;
  return recordOf(requestId, *entry);
}

bool RequestStorage::mergeEntries(std::vector<RequestForStorage> requests, bool keepReadCounts) {
  return sessionStore_->update(kRequestStorageKey, [&](std::optional<boost::json::value> current) {
    auto stored = dictionaryOf(std::move(current));
    // All read counters are looked up before any entry is written, so that
    // a list naming an id twice reads what was stored before it.
    if (keepReadCounts) {
      for (auto& request : requests) {
        const auto* entry = stored.if_contains(request.requestId());
        const auto record = entry ? recordOf(request.requestId(), *entry) : std::nullopt;
        if (record) request.setReadCommentCount(record->readCommentCount());
      }
    }
    for (const auto& request : requests) stored[request.requestId()] = entryOf(request);
    return boost::json::value(std::move(stored));
  });
}

bool RequestStorage::storeRequest(const std::optional<RequestForStorage>& request) {
  if (!request) return false;
  return mergeEntries({*request}, false);
}

bool RequestStorage::resetCacheTime(double now) {
  return sessionStore_->store(boost::json::value(now + kCacheValidityInterval), kCacheTimestampKey);
}

bool RequestStorage::storeRequestsAndResetCacheTime(
    const std::vector<RequestForStorage>& requests) {
  const double now = clock_();
  return mergeEntries(requests, false) && resetCacheTime(now);
}

bool RequestStorage::storeRequestsKeepingReadCountsAndResetCacheTime(
    std::vector<RequestForStorage> requests) {
  const double now = clock_();
  return mergeEntries(std::move(requests), true) && resetCacheTime(now);
}

bool RequestStorage::isRequestCacheExpired() const {
  const double now = clock_();
  const auto stamp = sessionStore_->value(kCacheTimestampKey);
  if (!stamp || !stamp->is_number()) return true;
  const double expiry = stamp->to_number<double>();
  if (expiry < now) {
    quorvel::CoreLogger::debug("`getUpdatesForDevice` cache is expired");
    return true;
  }
  // A stamp far in the future (written by hand) still formats: capped.
  const auto left =
      std::chrono::seconds(static_cast<std::int64_t>(std::floor(std::min(expiry - now, 1e12))));
  const auto text = quorvel::platform::DurationFormatter::formatMinutesSeconds(left);
  if (text.empty()) return true;
  quorvel::CoreLogger::debug("Time left in `getUpdatesForDevice` cache is " + text);
  return false;
}

}  // namespace velmaro
