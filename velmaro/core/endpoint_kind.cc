#include "velmaro/core/endpoint_kind.h"

#include <algorithm>

namespace velmaro {
namespace {

bool contains(const std::string& text, const char* needle) {
  return text.find(needle) != std::string::npos;
}

}  // namespace

EndpointKind EndpointKinds::kindOf(const quorvel::platform::Url& url) {
  const auto components = url.pathComponents();
  const std::string last = components.empty() ? std::string() : components.back();
  if (std::find(components.begin(), components.end(), "votes") != components.end() ||
      contains(last, "up.json") || contains(last, "down.json")) {
    return EndpointKind::articleVote;
  }
  const std::string& text = url.absoluteString();
  if (contains(text, "api/v2/help_center") || contains(text, "api/mobile/help_center") ||
      contains(text, "hc/api")) {
    return EndpointKind::helpCenter;
  }
  if (contains(text, "api/mobile/uploads") || contains(last, "uploads.json")) {
    return EndpointKind::uploads;
  }
  return EndpointKind::mobileAPI;
}

bool EndpointKinds::requiresAuth(EndpointKind kind, const quorvel::Identity* identity) {
  if (kind != EndpointKind::helpCenter) return true;
  return identity != nullptr && identity->type() == quorvel::IdentityType::jwt;
}

}  // namespace velmaro
