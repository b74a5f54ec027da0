#include "velmaro/requests/qvk_comment_with_user.h"

namespace velmaro {

QVKCommentWithUser QVKCommentWithUser::buildCommentWithUser(
    QVKComment comment, const std::vector<QVKSupportUser>* users) {
  if (users != nullptr) {
    for (const auto& user : *users) {
      if (user.userId && comment.authorId && *user.userId == *comment.authorId) {
        return {std::move(comment), user};
      }
    }
  }
  return {std::move(comment), std::nullopt};
}

}  // namespace velmaro
