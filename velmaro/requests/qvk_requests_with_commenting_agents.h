#pragma once

#include <optional>
#include <vector>

#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_support_user.h"

namespace velmaro {

// What a request-list call answers: the requests and the agents who last
// commented on them. Either list is absent when the answer lacked it.
struct QVKRequestsWithCommentingAgents {
  std::optional<std::vector<QVKRequest>> requests;
  std::optional<std::vector<QVKSupportUser>> commentingAgents;

  static QVKRequestsWithCommentingAgents initWithRequests(
      std::optional<std::vector<QVKRequest>> requests,
      std::optional<std::vector<QVKSupportUser>> commentingAgents) {
    return {std::move(requests), std::move(commentingAgents)};
  }
};

}  // namespace velmaro
