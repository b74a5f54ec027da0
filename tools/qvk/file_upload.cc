#include "tools/qvk/file_upload.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "tools/qvk/answer.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/transfer_wait.h"
#include "velmaro/attachments/qvk_upload_provider.h"
#include "velmaro/settings/qvk_attachment_settings_provider.h"

namespace qvk {

std::string FileUpload::contentTypeFor(const std::string& path) {
  static const std::map<std::string, std::string> kTypes = {
      {".jpg", "image/jpeg"},        {".jpeg", "image/jpeg"},     {".png", "image/png"},
      {".gif", "image/gif"},         {".tif", "image/tiff"},      {".tiff", "image/tiff"},
      {".webp", "image/webp"},       {".heic", "image/heic"},     {".pdf", "application/pdf"},
      {".txt", "text/plain"},        {".log", "text/plain"},      {".csv", "text/csv"},
      {".json", "application/json"}, {".zip", "application/zip"}, {".mp4", "video/mp4"},
      {".mov", "video/quicktime"}};
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto it = kTypes.find(extension);
  return it == kTypes.end() ? "application/octet-stream" : it->second;
}

FileUpload::Outcome FileUpload::upload(CommandContext& context, const std::string& path,
                                       const std::optional<std::string>& name,
                                       const std::optional<std::string>& contentType) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  // An unreadable file is the transport's to report, as the upload's error.
  if (!ec) {
    auto settings = LibraryCall::awaitSettings<velmaro::AttachmentSettings>(
        context.session, &velmaro::QVKAttachmentSettingsProvider::getAttachmentSettings);
    if (!settings) return {settings.error()};
    const auto limit = settings->maxAttachmentSize();
    if (limit > 0 && size > static_cast<std::uintmax_t>(limit)) {
      return {ClientErrors::fileTooLarge(path, size, limit)};
    }
  }
  const std::string fileName = name.value_or(std::filesystem::path(path).filename().string());
  TransferWait transfer(context, fileName);
  Answer<velmaro::QVKUploadResponse> answer;
  velmaro::QVKUploadProvider provider(context.session.core());
  auto handle = provider.uploadFile(path, fileName, contentType.value_or(contentTypeFor(path)),
                                    transfer.progress(), answer.callback());
  transfer.wait(handle, [&] { return answer.arrived(); });
  if (!answer.arrived()) return {ClientErrors::noAnswer(std::chrono::hours(24)), false};
  if (answer.error()) return {*answer.error(), transfer.interrupted()};
  return {answer.value().value_or(velmaro::QVKUploadResponse{}), false};
}

}  // namespace qvk
