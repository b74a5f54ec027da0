#pragma once

#include <optional>
#include <string>
#include <vector>

#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_request_provider_context.h"
#include "velmaro/requests/qvk_requests_with_commenting_agents.h"

namespace velmaro {

// Fetching one request and the user's request lists, for a JWT user by
// status and for an anonymous user by the ids the device stored.
class RequestFetchOperations {
 public:
  using Context = QVKRequestProviderContext;
  using ListCallback = ProviderCallback<QVKRequestsWithCommentingAgents>;

  static constexpr const char* kAllStatuses = "new,open,pending,hold,solved,closed";

  static void getRequestById(const Context& ctx, const std::optional<std::string>& requestId,
                             ProviderCallback<QVKRequest> cb);
  static void getRequestsByStatus(const Context& ctx, const std::optional<std::string>& status,
                                  ListCallback cb);
  static void getJwtRequestsByStatus(const Context& ctx, const std::string& status,
                                     ListCallback cb);
  static void getAnonymousRequestsWithTokens(const Context& ctx,
                                             const std::vector<std::string>& tokens,
                                             const std::string& status, ListCallback cb);
  static void unknownAuthErrorHandler(const Context& ctx, ListCallback cb);

 private:
  static ProviderRequest<QVKRequestsWithCommentingAgents> listRequest(std::string path);
};

}  // namespace velmaro
