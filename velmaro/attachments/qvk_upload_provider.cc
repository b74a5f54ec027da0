#include "velmaro/attachments/qvk_upload_provider.h"

#include <filesystem>

#include "quorvel/platform/url_encoding.h"
#include "velmaro/attachments/attachment_notifications.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/util/qvk_validator.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

namespace {

// The bytes are data, not text: present is enough, even when empty.
const std::string* asData(const std::optional<std::string>& attachment) {
  return attachment ? &*attachment : nullptr;
}

}  // namespace

ProviderRequest<QVKUploadResponse> QVKUploadProvider::uploadRequest(const std::string& filename,
                                                                    const std::string& contentType,
                                                                    std::uintmax_t length) const {
  ProviderRequest<QVKUploadResponse> request;
  // The whole URL is escaped, base included; reserved characters stay.
  request.url = quorvel::platform::UrlEncoding::legacyEscape(
      StringFormat::format("%@/api/mobile/uploads.json?filename=%@",
                           quorvel_ ? quorvel_->quorvelUrl() : std::string(), filename));
  request.httpMethod = "POST";
  request.headers = {{"Content-Type", contentType}, {"Content-Length", std::to_string(length)}};
  request.starting = QVKAPI_UploadAttachmentStarting;
  request.success = QVKAPI_UploadAttachmentSuccess;
  request.failures = {QVKAPI_UploadAttachmentError};
  request.parse = AnswerParsing::strictJson<QVKUploadResponse>(&QVKUploadResponse::initWithDict);
  request.notifiesBeforeAnswer = true;
  request.quietWithoutCallback = true;
  return request;
}

void QVKUploadProvider::uploadAttachment(const std::optional<std::string>& attachment,
                                         const std::optional<std::string>& filename,
                                         const std::optional<std::string>& contentType,
                                         ProviderCallback<QVKUploadResponse> cb) const {
  sendBytes(attachment, filename, contentType, nullptr, std::move(cb));
}

QVKUploadProvider::Handle QVKUploadProvider::uploadAttachment(
    const std::optional<std::string>& attachment, const std::optional<std::string>& filename,
    const std::optional<std::string>& contentType, Progress progress,
    ProviderCallback<QVKUploadResponse> cb) const {
  auto handle = quorvel::TransferHandle::make(std::move(progress));
  sendBytes(attachment, filename, contentType, handle, std::move(cb));
  return handle;
}

void QVKUploadProvider::sendBytes(const std::optional<std::string>& attachment,
                                  const std::optional<std::string>& filename,
                                  const std::optional<std::string>& contentType,
                                  const Handle& handle,
                                  ProviderCallback<QVKUploadResponse> cb) const {
  if (context_.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("attachment, filename, contentType ,callback",
                                                    asData(attachment), filename, contentType, cb),
          "-[QVKUploadProvider uploadAttachment:withFilename:andContentType:callback:]", cb,
          "callback")) {
    return;
  }
  auto request = uploadRequest(*filename, *contentType, attachment->size());
  request.body = *attachment;
  if (handle) {
    request.transfer = std::make_shared<quorvel::TransferOptions>(
        quorvel::TransferOptions{std::nullopt, std::nullopt, std::nullopt, handle});
  }
  context_.send(std::move(request), std::move(cb));
}

QVKUploadProvider::Handle QVKUploadProvider::uploadFile(
    const std::optional<std::string>& path, const std::optional<std::string>& filename,
    const std::optional<std::string>& contentType, Progress progress,
    ProviderCallback<QVKUploadResponse> cb) const {
  auto handle = quorvel::TransferHandle::make(std::move(progress));
  if (context_.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("path, filename, contentType, callback", path,
                                                    filename, contentType, cb),
          "QVKUploadProvider::uploadFile", cb, "callback")) {
    return handle;
  }
  // A file that cannot be read fails in the transport, as the upload's error.
  std::error_code ec;
  const auto length = std::filesystem::file_size(*path, ec);
  auto request = uploadRequest(*filename, *contentType, ec ? 0 : length);
  request.transfer = std::make_shared<quorvel::TransferOptions>(
      quorvel::TransferOptions{*path, std::nullopt, std::nullopt, handle});
  context_.send(std::move(request), std::move(cb));
  return handle;
}

void QVKUploadProvider::deleteUpload(const std::optional<std::string>& uploadToken,
                                     ProviderCallback<std::string> cb) const {
  if (context_.shouldStopAfterHandlingParameters(
          qvk_NilSafeNSDictionaryOfVariableBindings("uploadToken ,callback", uploadToken, cb),
          "-[QVKUploadProvider deleteUpload:andCallback:]", cb, "callback")) {
    return;
  }
  ProviderRequest<std::string> request;
  request.path = StringFormat::format("/api/mobile/uploads/%@.json", *uploadToken);
  request.httpMethod = "DELETE";
  request.starting = QVKAPI_DeleteUploadStarting;
  request.success = QVKAPI_DeleteUploadSuccess;
  request.failures = {QVKAPI_DeleteUploadError};
  // The status, not the body, is the answer.
  request.parse = [](QVKDispatcherResponse response) -> quorvel::platform::Result<std::string> {
    return std::to_string(response.response ? response.response->statusCode() : 0);
  };
  request.notifiesBeforeAnswer = true;
  request.quietWithoutCallback = true;
  context_.send(std::move(request), std::move(cb));
}

}  // namespace velmaro
