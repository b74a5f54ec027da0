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
#include "quorvel/platform/error.h"
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

  // Why the last download brought no document: the transport's error, or an
  // error in the "com.quorvel.sdk" domain with the HTTP status as code (a
  // 200 whose body is no JSON object is status 200). Nothing after a good
  // download or before the first. Callers read it when a callback answered
  // nothing, to say what went wrong; any thread.
  std::optional<platform::Error> lastDownloadFailure() const;

 private:
  void download();
  void finishDownload(std::optional<boost::json::value> downloaded,
                      std::optional<platform::Error> failure);

  AccountDetails account_;
  std::shared_ptr<platform::MainQueue> mainQueue_;
  mutable std::mutex mutex_;
  // Callers waiting for the download in flight.
  std::vector<DocumentCallback> waiting_;
  std::optional<platform::Error> lastFailure_;
};

}  // namespace quorvel
