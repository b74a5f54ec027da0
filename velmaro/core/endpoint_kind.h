#pragma once

#include "quorvel/identity.h"
#include "quorvel/platform/url.h"

namespace velmaro {

// What a request URL is, for the authentication rule and the restriction
// warning of the dispatcher.
enum class EndpointKind { helpCenter, articleVote, mobileAPI, uploads };

class EndpointKinds {
 public:
  // Checked in order, first match wins: a "votes" path component, or a last
  // component containing "up.json"/"down.json", is a vote; Help Center paths
  // next; then uploads; everything else is the mobile API.
  static EndpointKind kindOf(const quorvel::platform::Url& url);
  // Every kind needs authentication except Help Center reads, which need it
  // only for a JWT identity.
  static bool requiresAuth(EndpointKind kind, const quorvel::Identity* identity);
};

}  // namespace velmaro
