#pragma once

#include <optional>
#include <vector>

#include <boost/json/object.hpp>

#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_support_user.h"

namespace velmaro {

// Reads a request-list answer. No state.
class QVKRequestsResponse {
 public:
  // The requests under "requests" in server order; nothing when that value
  // is not an array.
  static std::optional<std::vector<QVKRequest>> parseRequestListWithDictionary(
      const boost::json::object& json);
  // The users under "last_commenting_agents", every one marked as an agent
  // whatever the answer says; nothing when that value is not an array.
  static std::optional<std::vector<QVKSupportUser>> parseRequestListAgentsWithDictionary(
      const boost::json::object& json);
};

}  // namespace velmaro
