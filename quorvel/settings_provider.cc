#include "quorvel/settings_provider.h"

#include <boost/json/parse.hpp>
#include <fmt/format.h>

#include "quorvel/basic_client_headers.h"
#include "quorvel/core_logger.h"
#include "quorvel/core_services.h"
#include "quorvel/core_version.h"
#include "quorvel/platform/http_status_text.h"
#include "quorvel/platform/url_encoding.h"
#include "quorvel/provider_service.h"

namespace quorvel {
namespace {

double nowSeconds() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

struct KeptDocument {
  boost::json::value document;
  double fetchedAt = 0;
};

std::optional<KeptDocument> keptDocument(const SessionStore& store) {
  const auto kept = store.value(SettingsProvider::kStoreKey);
  if (!kept || !kept->is_object()) return std::nullopt;
  const auto& object = kept->get_object();
  const auto* document = object.if_contains("document");
  const auto* fetchedAt = object.if_contains("fetched_at");
  if (document == nullptr || fetchedAt == nullptr || !fetchedAt->is_number()) return std::nullopt;
  return KeptDocument{*document, fetchedAt->to_number<double>()};
}

// Why a download brought no document; nothing when it brought one.
std::optional<platform::Error> failureOf(const std::optional<platform::Error>& error,
                                         const std::optional<HTTPURLResponse>& response,
                                         bool downloaded) {
  if (downloaded) return std::nullopt;
  if (error) return error;
  const long status = response ? response->statusCode() : 0;
  return platform::Error::withDescription("com.quorvel.sdk", status,
                                          status == 200
                                              ? "The settings answer is not a JSON object"
                                              : platform::HttpStatusText::localizedString(status));
}

}  // namespace

std::optional<platform::Error> SettingsProvider::lastDownloadFailure() const {
  std::lock_guard lock(mutex_);
  return lastFailure_;
}

void SettingsProvider::getDocument(DocumentCallback callback) {
  const auto services = account_.services();
  if (!services) {
    CoreLogger::warn("Settings were asked for after the core library shut down");
    mainQueue_->post([callback = std::move(callback)] {
      if (callback) callback(std::nullopt);
    });
    return;
  }
  if (const auto kept = keptDocument(*services->sessionStore());
      kept && nowSeconds() - kept->fetchedAt < static_cast<double>(kMaxAge.count())) {
    mainQueue_->post([callback = std::move(callback), document = kept->document]() mutable {
      if (callback) callback(std::move(document));
    });
    return;
  }
  bool start = false;
  {
    std::lock_guard lock(mutex_);
    start = waiting_.empty();
    waiting_.push_back(std::move(callback));
  }
  if (start) download();
}

void SettingsProvider::download() {
  // The app id is the caller's text: escaped as one segment, a '/', '?' or
  // "../" in it cannot lead the request to another path.
  const std::string url = fmt::format(
      "{}/api/mobile/sdk/settings/{}.json", account_.quorvelUrl(),
      platform::UrlEncoding::encode(account_.appId(),
                                    platform::UrlEncoding::CharacterSet::urlPathSegmentAllowed));
  ProviderService service(account_, url, false, HttpMethod::get,
                          std::make_shared<BasicClientHeaders>("quorvel-core", kCoreVersion),
                          std::nullopt, mainQueue_);
  service.perform([self = shared_from_this(), weak = account_](
                      std::optional<std::string> data, std::optional<HTTPURLResponse> response,
                      std::optional<platform::Error> error) {
    std::optional<boost::json::value> downloaded;
    if (!error && response && response->statusCode() == 200 && data) {
      boost::system::error_code ec;
      auto parsed = boost::json::parse(*data, ec);
      if (!ec && parsed.is_object()) downloaded = std::move(parsed);
    }
    auto failure = failureOf(error, response, downloaded.has_value());
    if (!downloaded) {
      CoreLogger::warn(
          fmt::format("Settings download failed ({}); using the kept document if there is one",
                      error ? error->debugDescription()
                            : fmt::format("status {}", response ? response->statusCode() : 0)));
    }
    if (const auto live = weak.services()) {
      if (downloaded) {
        boost::json::object kept;
        kept["document"] = *downloaded;
        kept["fetched_at"] = nowSeconds();
        live->sessionStore()->store(kept, kStoreKey);
      } else if (auto kept = keptDocument(*live->sessionStore())) {
        downloaded = std::move(kept->document);
      }
    }
    self->finishDownload(std::move(downloaded), std::move(failure));
  });
}

void SettingsProvider::finishDownload(std::optional<boost::json::value> downloaded,
                                      std::optional<platform::Error> failure) {
  std::vector<DocumentCallback> waiters;
  {
    std::lock_guard lock(mutex_);
    waiters.swap(waiting_);
    lastFailure_ = std::move(failure);
  }
  for (auto& waiter : waiters) {
    if (waiter) waiter(downloaded);
  }
}

}  // namespace quorvel
