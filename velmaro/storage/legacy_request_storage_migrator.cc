#include "velmaro/storage/legacy_request_storage_migrator.h"

#include "quorvel/core_logger.h"
#include "quorvel/platform/user_defaults.h"

namespace velmaro {

namespace {

// All strings, or nothing.
std::optional<std::vector<std::string>> stringsOf(const boost::json::value& value) {
  if (!value.is_array()) return std::nullopt;
  std::vector<std::string> strings;
  for (const auto& element : value.get_array()) {
    if (!element.is_string()) return std::nullopt;
    strings.emplace_back(element.get_string());
  }
  return strings;
}

// All integers, or nothing.
std::optional<boost::json::object> countsOf(const boost::json::value& value) {
  if (!value.is_object()) return std::nullopt;
  for (const auto& entry : value.get_object()) {
    if (!entry.value().is_int64()) return std::nullopt;
  }
  return value.get_object();
}

}  // namespace

LegacyRequestStorageMigrator::LegacyRequestStorageMigrator(RequestStorage requestStorage)
    : LegacyRequestStorageMigrator(std::move(requestStorage),
                                   quorvel::platform::UserDefaults::standard()) {}

LegacyRequestStorageMigrator::LegacyRequestStorageMigrator(
    RequestStorage requestStorage,
    std::shared_ptr<quorvel::platform::JsonKeyValueStore> userDefaults)
    : requestStorage_(std::move(requestStorage)), userDefaults_(std::move(userDefaults)) {}

std::optional<std::vector<RequestForStorage>> LegacyRequestStorageMigrator::oldRecords() const {
  const auto idsValue = userDefaults_->value(requestStorageId);
  if (!idsValue) return std::nullopt;
  const auto ids = stringsOf(*idsValue);
  if (!ids) return std::nullopt;
  const auto countsValue = userDefaults_->value(commentCountKey);
  if (!countsValue) return std::nullopt;
  const auto counts = countsOf(*countsValue);
  if (!counts) return std::nullopt;
  std::vector<RequestForStorage> records;
  for (const auto& id : *ids) {
    const auto* count = counts->if_contains(id);
    records.emplace_back(id, count != nullptr ? count->get_int64() : 0, 0);
  }
  return records;
}

void LegacyRequestStorageMigrator::checkAndMigrateOldTicketIds() {
  const auto records = oldRecords();
  if (!records) return;
  if (!requestStorage_.storeRequestsAndResetCacheTime(*records)) {
    quorvel::CoreLogger::error(kFailedMessage);
    return;
  }
  quorvel::CoreLogger::info(kMigratedMessage);
  userDefaults_->remove(requestStorageId);
  userDefaults_->remove(commentCountKey);
  userDefaults_->synchronize();
  quorvel::CoreLogger::info(kDeletedMessage);
}

}  // namespace velmaro
