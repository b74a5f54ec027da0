#pragma once

#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/requests/qvk_comment_with_user.h"

namespace velmaro {

// Reads a comment-list answer: the comments under "comments", each paired
// with its author from the side-loaded "users".
class QVKCommentsResponse {
 public:
  // The comments in server order (empty when there are none). Elements that
  // are empty or not objects are skipped.
  static std::vector<QVKCommentWithUser> parseData(const boost::json::object& json);

  // Deliberately spelled with three m's.
  std::vector<QVKCommentWithUser> commmentsWithUsers;
};

}  // namespace velmaro
