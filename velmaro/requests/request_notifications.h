#pragma once

namespace velmaro {

// What the request provider announces on the default notification centre;
// each constant's value is its name. Failures carry {"error": error}.
inline constexpr const char* QVKAPI_RequestSubmissionStarting = "QVKAPI_RequestSubmissionStarting";
inline constexpr const char* QVKAPI_RequestSubmissionSuccess = "QVKAPI_RequestSubmissionSuccess";
inline constexpr const char* QVKAPI_RequestSubmissionError = "QVKAPI_RequestSubmissionError";
inline constexpr const char* QVKAPI_RequestByIdStarting = "QVKAPI_RequestByIdStarting";
inline constexpr const char* QVKAPI_RequestByIdSuccess = "QVKAPI_RequestByIdSuccess";
inline constexpr const char* QVKAPI_RequestByIdError = "QVKAPI_RequestByIdError";
inline constexpr const char* QVKAPI_RequestsStarting = "QVKAPI_RequestsStarting";
inline constexpr const char* QVKAPI_RequestsSuccess = "QVKAPI_RequestsSuccess";
inline constexpr const char* QVKAPI_RequestsError = "QVKAPI_RequestsError";
inline constexpr const char* QVKAPI_CommentListStarting = "QVKAPI_CommentListStarting";
inline constexpr const char* QVKAPI_CommentListSuccess = "QVKAPI_CommentListSuccess";
inline constexpr const char* QVKAPI_CommentListError = "QVKAPI_CommentListError";
inline constexpr const char* QVKAPI_CommentSubmissionStarting = "QVKAPI_CommentSubmissionStarting";
inline constexpr const char* QVKAPI_CommentSubmissionSuccess = "QVKAPI_CommentSubmissionSuccess";
inline constexpr const char* QVKAPI_CommentSubmissionError = "QVKAPI_CommentSubmissionError";

}  // namespace velmaro
