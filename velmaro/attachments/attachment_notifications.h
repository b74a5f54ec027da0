#pragma once

namespace velmaro {

// What the upload provider announces on the default notification centre,
// with the provider as sender; each constant's value is its name. The
// attachment provider announces nothing.
inline constexpr const char* QVKAPI_UploadAttachmentStarting = "QVKAPI_UploadAttachmentStarting";
inline constexpr const char* QVKAPI_UploadAttachmentSuccess = "QVKAPI_UploadAttachmentSuccess";
inline constexpr const char* QVKAPI_UploadAttachmentError = "QVKAPI_UploadAttachmentError";
inline constexpr const char* QVKAPI_DeleteUploadStarting = "QVKAPI_DeleteUploadStarting";
inline constexpr const char* QVKAPI_DeleteUploadSuccess = "QVKAPI_DeleteUploadSuccess";
inline constexpr const char* QVKAPI_DeleteUploadError = "QVKAPI_DeleteUploadError";

}  // namespace velmaro
