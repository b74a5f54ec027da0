#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "quorvel/platform/image_decoder.h"
#include "quorvel/quorvel.h"
#include "quorvel/transfer_handle.h"
#include "velmaro/core/provider_context.h"

namespace velmaro {

// Downloads the bytes of an attachment or an avatar from the content URL the
// service gave for it. Posts no notifications; answers a callback only when
// there is one, on the core object's main queue.
class QVKAttachmentProvider {
 public:
  using Error = quorvel::platform::Error;
  using Image = quorvel::platform::Image;
  using Progress = quorvel::TransferHandle::Progress;
  using Handle = std::shared_ptr<quorvel::TransferHandle>;

  struct DownloadOptions {
    // Bytes received and expected (0 while unknown), on the main queue.
    Progress progress;
    // The largest body accepted; else the transport's answer-size limit.
    // A larger one ends with the transport's "too large" error (-1103).
    std::optional<std::size_t> maxBytes;
  };

  explicit QVKAttachmentProvider(std::shared_ptr<quorvel::Quorvel> quorvel)
      : quorvel_(std::move(quorvel)), context_(quorvel_, this) {}
  QVKAttachmentProvider(const QVKAttachmentProvider&) = delete;
  QVKAttachmentProvider& operator=(const QVKAttachmentProvider&) = delete;

  // A URL text that is not valid as it stands (a blank in a file name, say)
  // is tried again percent-encoded for a URL fragment.
  void getAttachmentForUrl(const std::optional<std::string>& attachmentUrl,
                           ProviderCallback<std::string> cb) const;
  // The bytes decoded as an image (within the decoder's dimension limits);
  // bytes that are no image answer neither image nor error.
  void getAvatarForUrl(const std::optional<std::string>& avatarUrl,
                       ProviderCallback<Image> cb) const;

  // The same download with progress, a size limit and a handle to cancel it.
  Handle getAttachmentForUrl(const std::optional<std::string>& attachmentUrl,
                             DownloadOptions options, ProviderCallback<std::string> cb) const;
  // The same download written to the file at `path` (complete or not at
  // all); answers the path.
  Handle downloadAttachment(const std::optional<std::string>& attachmentUrl,
                            const std::optional<std::string>& path, DownloadOptions options,
                            ProviderCallback<std::string> cb) const;

  // The URL a text names: as it stands, else encoded for a fragment.
  static std::string urlText(const std::string& text);

  const std::shared_ptr<quorvel::Quorvel>& quorvel() const { return quorvel_; }

 private:
  void download(const std::optional<std::string>& attachmentUrl,
                std::shared_ptr<const quorvel::TransferOptions> transfer,
                ProviderCallback<std::string> cb) const;

  std::shared_ptr<quorvel::Quorvel> quorvel_;
  ProviderContext context_;
};

using AttachmentProvider = QVKAttachmentProvider;

}  // namespace velmaro
