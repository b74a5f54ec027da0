#pragma once

#include <optional>
#include <vector>

#include "velmaro/requests/qvk_comment.h"
#include "velmaro/requests/qvk_support_user.h"

namespace velmaro {

// A comment paired with its author, who may be unknown.
class QVKCommentWithUser {
 public:
  QVKCommentWithUser(QVKComment comment, std::optional<QVKSupportUser> user)
      : comment_(std::move(comment)), user_(std::move(user)) {}
  static QVKCommentWithUser initWithComment(QVKComment comment,
                                            std::optional<QVKSupportUser> user) {
    return {std::move(comment), std::move(user)};
  }

  // The comment with the first user whose id equals its author id; with no
  // user when none does or there is no list.
  static QVKCommentWithUser buildCommentWithUser(QVKComment comment,
                                                 const std::vector<QVKSupportUser>* users);

  const QVKComment& comment() const { return comment_; }
  const std::optional<QVKSupportUser>& user() const { return user_; }

 private:
  QVKComment comment_;
  std::optional<QVKSupportUser> user_;
};

}  // namespace velmaro
