#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "quorvel/quorvel.h"
#include "quorvel/transfer_handle.h"
#include "velmaro/core/provider_context.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace velmaro {

// Uploads the files a user attaches to a new request or a comment (the
// service answers each with the token that the create or comment call then
// names) and deletes such uploads.
//
// Callbacks and notifications come on the core object's main queue; the
// notifications are posted before the callback is answered. A failure with
// no callback posts nothing. A call in flight holds a copy of the context,
// never the provider.
class QVKUploadProvider {
 public:
  using Error = quorvel::platform::Error;
  using Progress = quorvel::TransferHandle::Progress;
  using Handle = std::shared_ptr<quorvel::TransferHandle>;

  explicit QVKUploadProvider(std::shared_ptr<quorvel::Quorvel> quorvel)
      : quorvel_(std::move(quorvel)), context_(quorvel_, this) {}
  QVKUploadProvider(const QVKUploadProvider&) = delete;
  QVKUploadProvider& operator=(const QVKUploadProvider&) = delete;

  // POSTs the bytes as they are, with the file name in the URL and exactly
  // the content type and length as header fields of the request.
  void uploadAttachment(const std::optional<std::string>& attachment,
                        const std::optional<std::string>& filename,
                        const std::optional<std::string>& contentType,
                        ProviderCallback<QVKUploadResponse> cb) const;
  // The same, with progress (bytes sent, total) on the main queue and a
  // handle that cancels it.
  Handle uploadAttachment(const std::optional<std::string>& attachment,
                          const std::optional<std::string>& filename,
                          const std::optional<std::string>& contentType, Progress progress,
                          ProviderCallback<QVKUploadResponse> cb) const;
  // The same request, its body streamed from the file at `path` rather than
  // held in memory.
  Handle uploadFile(const std::optional<std::string>& path,
                    const std::optional<std::string>& filename,
                    const std::optional<std::string>& contentType, Progress progress,
                    ProviderCallback<QVKUploadResponse> cb) const;

  // Answers the HTTP status of the deletion as decimal text ("204").
  void deleteUpload(const std::optional<std::string>& uploadToken,
                    ProviderCallback<std::string> cb) const;

  const std::shared_ptr<quorvel::Quorvel>& quorvel() const { return quorvel_; }

 private:
  // The upload request, its body still to be given.
  ProviderRequest<QVKUploadResponse> uploadRequest(const std::string& filename,
                                                   const std::string& contentType,
                                                   std::uintmax_t length) const;
  // The in-memory upload; `handle` may be null.
  void sendBytes(const std::optional<std::string>& attachment,
                 const std::optional<std::string>& filename,
                 const std::optional<std::string>& contentType, const Handle& handle,
                 ProviderCallback<QVKUploadResponse> cb) const;

  std::shared_ptr<quorvel::Quorvel> quorvel_;
  ProviderContext context_;
};

using UploadProvider = QVKUploadProvider;

}  // namespace velmaro
