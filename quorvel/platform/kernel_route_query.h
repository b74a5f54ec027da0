#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace quorvel::platform {

// An address whose reachability is asked for. `any` stands for the network
// in general: the kernel answers a look-up of 0.0.0.0 or :: with the local
// table (connecting there reaches this host), so "any" is judged by the
// default routes instead; with AF_UNSPEC, IPv4's or IPv6's.
struct ReachabilityTarget {
  int family = 0;  // AF_INET, AF_INET6, or AF_UNSPEC with `any`
  std::array<std::uint8_t, 16> address{};
  bool any = false;
};

// Asks the kernel, over routing netlink, how `target` would be reached now:
// the route it picks (or the best default route whose link is up), whether
// that route has a gateway, and the state and kind of its link. Each call
// opens and closes its own socket; safe from any thread, and quick (the
// kernel answers from its tables at once; every receive is bounded).
class KernelRouteQuery {
 public:
  // The reading as ReachabilityFlags; nothing when the kernel could not be
  // asked (no netlink socket). No route, an unreachable or blackhole route
  // and a link that is down or has no carrier read as 0.
  static std::optional<std::uint32_t> flagsFor(const ReachabilityTarget& target);
};

}  // namespace quorvel::platform
