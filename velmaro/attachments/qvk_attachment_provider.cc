#include "velmaro/attachments/qvk_attachment_provider.h"

#include "quorvel/platform/url.h"
#include "quorvel/platform/url_encoding.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro {

using quorvel::platform::UrlEncoding;

std::string QVKAttachmentProvider::urlText(const std::string& text) {
  if (quorvel::platform::Url::make(text)) return text;
  return UrlEncoding::encode(text, UrlEncoding::CharacterSet::urlFragmentAllowed);
}

void QVKAttachmentProvider::getAttachmentForUrl(const std::optional<std::string>& attachmentUrl,
                                                ProviderCallback<std::string> cb) const {
  download(attachmentUrl, nullptr, std::move(cb));
}

void QVKAttachmentProvider::getAvatarForUrl(const std::optional<std::string>& avatarUrl,
                                            ProviderCallback<Image> cb) const {
  download(avatarUrl, nullptr,
           [cb = std::move(cb)](std::optional<std::string> data, std::optional<Error> error) {
             if (!cb) return;
             if (!data) {
               cb(std::nullopt, std::move(error));
               return;
             }
             auto image = quorvel::platform::ImageDecoder::decode(*data);
             if (!image.ok()) {
               cb(std::nullopt, std::nullopt);
               return;
             }
             cb(std::move(image).value(), std::nullopt);
           });
}

QVKAttachmentProvider::Handle QVKAttachmentProvider::getAttachmentForUrl(
    const std::optional<std::string>& attachmentUrl, DownloadOptions options,
    ProviderCallback<std::string> cb) const {
  auto handle = quorvel::TransferHandle::make(std::move(options.progress));
  download(attachmentUrl,
           std::make_shared<quorvel::TransferOptions>(
               quorvel::TransferOptions{std::nullopt, std::nullopt, options.maxBytes, handle}),
           std::move(cb));
  return handle;
}

QVKAttachmentProvider::Handle QVKAttachmentProvider::downloadAttachment(
    const std::optional<std::string>& attachmentUrl, const std::optional<std::string>& path,
    DownloadOptions options, ProviderCallback<std::string> cb) const {
  auto handle = quorvel::TransferHandle::make(std::move(options.progress));
  if (context_.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("path, callback", path, cb),
          "QVKAttachmentProvider::downloadAttachment", cb, "callback")) {
    return handle;
  }
  download(
      attachmentUrl,
      std::make_shared<quorvel::TransferOptions>(
          quorvel::TransferOptions{std::nullopt, *path, options.maxBytes, handle}),
      [cb = std::move(cb), target = *path](std::optional<std::string>, std::optional<Error> error) {
        if (error) {
          cb(std::nullopt, std::move(error));
          return;
        }
        cb(target, std::nullopt);
      });
  return handle;
}

void QVKAttachmentProvider::download(const std::optional<std::string>& attachmentUrl,
                                     std::shared_ptr<const quorvel::TransferOptions> transfer,
                                     ProviderCallback<std::string> cb) const {
  if (context_.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("attachmentUrl, callback", attachmentUrl, cb),
          "-[QVKAttachmentProvider getAttachmentForUrl:withCallback:]", cb, "callback")) {
    return;
  }
  ProviderRequest<std::string> request;
  request.url = urlText(*attachmentUrl);
  request.headers = {{"Accept", "*/*"}};
  // An empty body is an empty file, not a missing one.
  request.parse = [](QVKDispatcherResponse response) -> quorvel::platform::Result<std::string> {
    return std::move(response.data).value_or(std::string());
  };
  request.quietWithoutCallback = true;
  request.transfer = std::move(transfer);
  context_.send(std::move(request), std::move(cb));
}

}  // namespace velmaro
