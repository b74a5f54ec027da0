#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/account_details.h"
#include "quorvel/decodable_default.h"
#include "quorvel/platform/main_queue.h"

namespace quorvel {

class CoreServices;

// The service's settings document for this app: downloaded with
// GET /api/mobile/sdk/settings/<app id>.json, kept in the session store,
// downloaded again when older than an hour, and taken from the store when a
// download fails. Callbacks are posted to the main queue, exactly once (with nothing
// once the core has shut down). Held by std::shared_ptr.
class SettingsProvider : public std::enable_shared_from_this<SettingsProvider> {
 public:
  using DocumentCallback = std::function<void(std::optional<boost::json::value>)>;

  static constexpr const char* kStoreKey = "quorvel.core.settings";
  static constexpr std::chrono::seconds kMaxAge{3600};

  SettingsProvider(AccountDetails account, std::shared_ptr<platform::MainQueue> mainQueue)
      : account_(std::move(account)), mainQueue_(std::move(mainQueue)) {}

  // The document decoded as T; nothing when there is no document or it does
  // not decode as T.
  template <DecodableDefault T>
  void getSettings(std::function<void(std::optional<T>)> callback) {
    getDocument([callback = std::move(callback)](std::optional<boost::json::value> document) {
      if (!callback) return;
      if (!document) {
        callback(std::nullopt);
        return;
      }
      auto decoded = T::decode(*document);
      if (decoded.ok()) {
        callback(std::move(decoded).value());
      } else {
        callback(std::nullopt);
      }
    });
  }

  void getDocument(DocumentCallback callback);

 private:
  void download();
  void finishDownload(std::optional<boost::json::value> downloaded);

  AccountDetails account_;
  std::shared_ptr<platform::MainQueue> mainQueue_;
  std::mutex mutex_;
  // Callers waiting for the download in flight.
  std::vector<DocumentCallback> waiting_;
};

}  // namespace quorvel
