// Request records from hostile JSON: every reader of a request, comment,
// upload or create answer, and the write-back of a request, which must read
// back to the same dictionary once comment HTML (sanitized on every read) is
// set aside.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include <boost/json.hpp>

#include "velmaro/requests/qvk_comments_response.h"
#include "velmaro/requests/qvk_create_request.h"
#include "velmaro/requests/qvk_requests_response.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace {

// A comment's HTML is sanitized again on every read, and a comment that
// writes no key reads back as no comment: both are set aside.
void dropCommentHtml(std::optional<velmaro::QVKComment>& comment) {
  if (!comment) return;
  comment->htmlBody.reset();
  if (comment->toJson().empty()) comment.reset();
}

void dropCommentHtml(velmaro::QVKRequest& request) {
  dropCommentHtml(request.firstComment);
  dropCommentHtml(request.lastComment);
}

// toJson then initWithDict loses nothing but comment attachments.
void checkRoundTrip(velmaro::QVKRequest request) {
  dropCommentHtml(request);
  const auto written = request.toJson();
  auto reread = velmaro::QVKRequest::initWithDict(written);
  dropCommentHtml(reread);
  if (reread.toJson() != written) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  boost::system::error_code error;
  const auto value =
      boost::json::parse(std::string_view(reinterpret_cast<const char*>(data), size), error);
  if (error || !value.is_object()) return 0;
  const auto& json = value.get_object();
  if (auto requests = velmaro::QVKRequestsResponse::parseRequestListWithDictionary(json)) {
    for (const auto& request : *requests) checkRoundTrip(request);
  }
  velmaro::QVKRequestsResponse::parseRequestListAgentsWithDictionary(json);
  for (const auto& entry : velmaro::QVKCommentsResponse::parseData(json)) {
    (void)entry.comment().toJson();
    if (entry.user()) (void)entry.user()->toJson();
  }
  (void)velmaro::QVKUploadResponse::initWithDict(json);
  (void)velmaro::QVKCreateRequest::initWithDict(json).description();
  checkRoundTrip(velmaro::QVKRequest::initWithDict(json));
  return 0;
}
