#pragma once

#include <memory>
#include <string>

#include "velmaro/storage/request_storage.h"

namespace quorvel::platform {
class JsonKeyValueStore;
}

namespace velmaro {

// Moves the request ids and comment counts that earlier releases kept in the
// user defaults into the request store, once, then deletes the old keys.
// Anything missing or of the wrong kind stops it without a change, so a later
// call tries again; on a device without old data it returns at once.
class LegacyRequestStorageMigrator {
 public:
  static constexpr const char* kRequestStorageId = "qvk_request-ids";
  static constexpr const char* kRequestKey = "request";
  static constexpr const char* kCommentCountKey = "QVKRequestCommentCountKey";
  static constexpr const char* kMigratedMessage =
      "Migration of old request IDs sucessfully completed";
  static constexpr const char* kDeletedMessage = "Old request ID storage successfully deleted";
  static constexpr const char* kFailedMessage = "Failed to migrate old storage request ID's";

  LegacyRequestStorageMigrator() = delete;
  // Over the platform's standard user defaults.
  explicit LegacyRequestStorageMigrator(RequestStorage requestStorage);
  LegacyRequestStorageMigrator(RequestStorage requestStorage,
                               std::shared_ptr<quorvel::platform::JsonKeyValueStore> userDefaults);
  static LegacyRequestStorageMigrator initWithRequestStorage(RequestStorage requestStorage) {
    return LegacyRequestStorageMigrator(std::move(requestStorage));
  }

  void checkAndMigrateOldTicketIds();

  const std::string requestStorageId = kRequestStorageId;
  const std::string requestKey = kRequestKey;
  const std::string commentCountKey = kCommentCountKey;

 private:
  std::optional<std::vector<RequestForStorage>> oldRecords() const;

  RequestStorage requestStorage_;
  std::shared_ptr<quorvel::platform::JsonKeyValueStore> userDefaults_;
};

using QVKLegacyRequestStorageMigrator = LegacyRequestStorageMigrator;

}  // namespace velmaro
