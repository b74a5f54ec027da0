#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/requests/qvk_comment_with_user.h"
#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_request_provider_context.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace velmaro {

// A request's comments, and adding one.
class RequestCommentOperations {
 public:
  using Context = QVKRequestProviderContext;
  using CommentsCallback = ProviderCallback<std::vector<QVKCommentWithUser>>;

  static void getCommentsWithRequestId(const Context& ctx,
                                       const std::optional<std::string>& requestId,
                                       CommentsCallback cb);
  // Only the comments since `sinceDate`, and with `onlyAgent` only agents'.
  static void getCommentsWithRequestId(
      const Context& ctx, const std::optional<std::string>& requestId,
      const std::optional<std::chrono::system_clock::time_point>& sinceDate, bool onlyAgent,
      CommentsCallback cb);
  // Without attachments when `attachments` is absent.
  static void addComment(const Context& ctx, const std::optional<std::string>& comment,
                         const std::optional<std::string>& requestId,
                         const std::optional<std::vector<QVKUploadResponse>>& attachments,
                         ProviderCallback<QVKComment> cb);

  // The PUT of a reply, with its notifications; its answer counts the
  // user's own comment as read and as a usage event. The outbox sends kept
  // replies with it.
  static ProviderRequest<QVKComment> submission(
      const std::string& requestId, const std::string& text,
      const std::optional<std::vector<QVKUploadResponse>>& attachments);
  // What a sent reply's answer would have done, for one a read found the
  // service already had.
  static void arrived(const Context& ctx, const std::string& requestId, const QVKComment& comment);

  // The request of an add-comment answer, with its last comment from
  // createCommentWithJson; none when the answer has no "request".
  static std::optional<QVKRequest> createRequestWithJson(
      const boost::json::object& json, const std::string& requestId, const std::string& body,
      const std::optional<std::vector<QVKUploadResponse>>& attachments);
  // The answer's last comment, or one made here from what was sent (the
  // requester as author, now as its time); attachments sent replace the
  // answer's.
  static QVKComment createCommentWithJson(
      const boost::json::object& json, const std::string& requestId, const std::string& body,
      const std::optional<std::vector<QVKUploadResponse>>& attachments);

 private:
  static void getCommentsWithPath(const Context& ctx, std::string path, CommentsCallback cb);
};

}  // namespace velmaro
