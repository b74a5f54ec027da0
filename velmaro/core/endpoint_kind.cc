#include "velmaro/core/endpoint_kind.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace velmaro {
namespace {

bool contains(std::string_view text, std::string_view needle) {
  return text.find(needle) != std::string_view::npos;
}

}  // namespace

EndpointKind EndpointKinds::kindOf(const quorvel::platform::Url& url) {
  std::string decodedLast;
  std::string_view last;
  bool votes = false;
  const std::string& path = url.path();
  if (path.find('%') == std::string::npos) {
    // The usual path has no escapes: its segments are read in place, without
    // the copies pathComponents() makes (this runs twice on every call).
    if (!path.empty() && path.front() == '/') last = "/";
    for (std::string_view rest = path; !rest.empty();) {
      const auto slash = rest.find('/');
      const auto segment = rest.substr(0, slash);
      if (!segment.empty()) {
        votes = votes || segment == "votes";
        last = segment;
      }
      if (slash == std::string_view::npos) break;
      rest.remove_prefix(slash + 1);
    }
  } else {
    const auto components = url.pathComponents();
    votes = std::find(components.begin(), components.end(), "votes") != components.end();
    if (!components.empty()) decodedLast = components.back();
    last = decodedLast;
  }
  if (votes || contains(last, "up.json") || contains(last, "down.json")) {
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
