#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "quorvel/platform/error.h"
#include "quorvel/platform/url_request.h"
#include "quorvel/quorvel.h"
#include "quorvel/transport_request.h"
#include "velmaro/core/qvk_dispatcher_response.h"

namespace velmaro {

// Content types for uploads of images.
inline constexpr const char* QVD_MIMETypeJPEG = "image/jpeg";
inline constexpr const char* QVD_MIMETypePNG = "image/png";
inline constexpr const char* QVD_MIMETypeGIF = "image/gif";
inline constexpr const char* QVD_MIMETypeTIFF = "image/tiff";

// The one path of every network call: a provider hands it a URL request and
// hears back exactly once, with a response or an error, on the main queue
// (only a request without URL is refused at once, on the caller's thread).
class QVKAPIDispatcher {
 public:
  using OnSuccess = std::function<void(QVKDispatcherResponse)>;
  using OnError = std::function<void(quorvel::platform::Error)>;
  using RequestBuilder = std::function<quorvel::platform::URLRequest()>;

  // Makes the shared dispatcher on first use, then points it at `quorvel`
  // (the last caller wins) and returns it.
  static std::shared_ptr<QVKAPIDispatcher> instanceWithQuorvel(
      std::shared_ptr<quorvel::Quorvel> quorvel);
  // The shared dispatcher, or nothing before the first instanceWithQuorvel().
  static std::shared_ptr<QVKAPIDispatcher> instance();
  // Clears the core library's kept settings and session.
  static void resetSession();
  static void resetForTesting();

  // Builds the request at once, on the caller's thread, and runs it.
  void executeRequest(const RequestBuilder& build, OnSuccess onSuccess, OnError onError);
  // `transfer`: files, size limit, progress and cancellation, if any.
  void executeRequestNoBlock(quorvel::platform::URLRequest request, OnSuccess onSuccess,
                             OnError onError,
                             std::shared_ptr<const quorvel::TransferOptions> transfer = nullptr);

  std::shared_ptr<quorvel::Quorvel> quorvel() const;
  void setQuorvel(std::shared_ptr<quorvel::Quorvel> quorvel);

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<quorvel::Quorvel> quorvel_;
};

}  // namespace velmaro
