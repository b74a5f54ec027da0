#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "quorvel/platform/error.h"
#include "velmaro/outbox/outbox_entry.h"
#include "velmaro/requests/qvk_comment_with_user.h"
#include "velmaro/requests/qvk_request.h"
#include "velmaro/requests/qvk_request_provider_context.h"

namespace velmaro {

// Whether the service already has a kept call whose answer was lost: a new
// request among the user's requests, a reply among the request's comments
// since the call was kept, each matched by its text and its author (the
// user, never an agent) and made no earlier than a little before the call
// was kept. The read bypasses the HTTP cache: a stored list would hide the
// call and have it sent twice.
class OutboxReadBack {
 public:
  using Error = quorvel::platform::Error;
  struct Found {
    std::optional<QVKRequest> request;
    std::optional<QVKComment> comment;
  };
  // `found` absent and no error: the service does not have it.
  using Answer = std::function<void(std::optional<Found> found, std::optional<Error> error)>;

  // How far the service's clock may be behind the device's.
  static constexpr std::chrono::minutes kClockSlack{5};

  static void find(const QVKRequestProviderContext& ctx, const OutboxEntry& entry, Answer answer);

  static std::optional<QVKRequest> matchingRequest(const std::vector<QVKRequest>& requests,
                                                   const OutboxEntry& entry);
  static std::optional<QVKComment> matchingComment(const std::vector<QVKCommentWithUser>& comments,
                                                   const OutboxEntry& entry);

 private:
  static void findRequest(const QVKRequestProviderContext& ctx, const OutboxEntry& entry,
                          Answer answer);
  static void findComment(const QVKRequestProviderContext& ctx, const OutboxEntry& entry,
                          Answer answer);
};

}  // namespace velmaro
