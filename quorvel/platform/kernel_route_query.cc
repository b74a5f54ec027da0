#include "quorvel/platform/kernel_route_query.h"

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include "quorvel/platform/network_link_kind.h"
#include "quorvel/platform/reachability_flags.h"

namespace quorvel::platform {
namespace {

struct Route {
  unsigned char type = RTN_UNSPEC;
  int oif = 0;
  bool gateway = false;
  std::uint32_t priority = 0;
};

struct Link {
  unsigned flags = 0;
  std::string name;
};

using Each = std::function<void(const nlmsghdr& message)>;

// Calls `f(type, data, length)` for each attribute in [begin, begin+length).
template <class F>
void forEachAttribute(const char* begin, std::size_t length, F f) {
  std::size_t offset = 0;
  while (offset + sizeof(rtattr) <= length) {
    const auto* attribute = reinterpret_cast<const rtattr*>(begin + offset);
    if (attribute->rta_len < sizeof(rtattr) || offset + attribute->rta_len > length) return;
    f(attribute->rta_type, begin + offset + RTA_LENGTH(0), attribute->rta_len - RTA_LENGTH(0));
    offset += RTA_ALIGN(attribute->rta_len);
  }
}

std::uint32_t readU32(const char* data, std::size_t length) {
  std::uint32_t value = 0;
  if (length >= sizeof value) std::memcpy(&value, data, sizeof value);
  return value;
}

// Sends `request` and hands each answer to `each`: every message of a dump
// up to its end, or the single answer (or error) of a get. False when the
// socket could not be made or the kernel did not answer within a second.
bool exchange(nlmsghdr& request, const Each& each) {
  const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (fd < 0) return false;
  struct Closer {
    int fd;
    ~Closer() { ::close(fd); }
  } closer{fd};
  const timeval timeout{1, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
  sockaddr_nl kernel{};
  kernel.nl_family = AF_NETLINK;
  request.nlmsg_seq = 1;
  if (::sendto(fd, &request, request.nlmsg_len, 0, reinterpret_cast<const sockaddr*>(&kernel),
               sizeof kernel) < 0) {
    return false;
  }
  const bool dump = (request.nlmsg_flags & NLM_F_DUMP) != 0;
  alignas(nlmsghdr) static thread_local char buffer[32768];
  for (int rounds = 0; rounds < 4096; ++rounds) {
    const auto got = ::recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    const auto size = static_cast<std::size_t>(got);
    std::size_t offset = 0;
    while (offset + sizeof(nlmsghdr) <= size) {
      const auto* message = reinterpret_cast<const nlmsghdr*>(buffer + offset);
      if (message->nlmsg_len < sizeof(nlmsghdr) || offset + message->nlmsg_len > size) break;
      if (message->nlmsg_type == NLMSG_DONE) return true;
      each(*message);
      if (!dump || message->nlmsg_type == NLMSG_ERROR) return true;
      offset += NLMSG_ALIGN(message->nlmsg_len);
    }
  }
  return false;
}

std::optional<Route> routeFrom(const nlmsghdr& message) {
  if (message.nlmsg_type != RTM_NEWROUTE || message.nlmsg_len < NLMSG_LENGTH(sizeof(rtmsg))) {
    return std::nullopt;
  }
  const auto* route = static_cast<const rtmsg*>(NLMSG_DATA(&message));
  Route result;
  result.type = route->rtm_type;
  const auto* attributes = reinterpret_cast<const char*>(route) + NLMSG_ALIGN(sizeof(rtmsg));
  forEachAttribute(attributes, message.nlmsg_len - NLMSG_LENGTH(sizeof(rtmsg)),
                   [&result](unsigned short type, const char* data, std::size_t length) {
                     if (type == RTA_OIF) result.oif = static_cast<int>(readU32(data, length));
                     if (type == RTA_GATEWAY || type == RTA_VIA) result.gateway = true;
                     if (type == RTA_PRIORITY) result.priority = readU32(data, length);
                     // A route over several next hops: judged by the first.
                     if (type == RTA_MULTIPATH && length >= sizeof(rtnexthop) && result.oif == 0) {
                       const auto* hop = reinterpret_cast<const rtnexthop*>(data);
                       result.oif = hop->rtnh_ifindex;
                       result.gateway = true;
                     }
                   });
  return result;
}

bool isDefaultInMain(const nlmsghdr& message) {
  if (message.nlmsg_type != RTM_NEWROUTE || message.nlmsg_len < NLMSG_LENGTH(sizeof(rtmsg))) {
    return false;
  }
  const auto* route = static_cast<const rtmsg*>(NLMSG_DATA(&message));
  return route->rtm_dst_len == 0 && route->rtm_table == RT_TABLE_MAIN &&
         route->rtm_type == RTN_UNICAST;
}

std::optional<Link> linkOf(int index) {
  struct {
    nlmsghdr header;
    ifinfomsg link;
  } request{};
  request.header.nlmsg_len = NLMSG_LENGTH(sizeof(ifinfomsg));
  request.header.nlmsg_type = RTM_GETLINK;
  request.header.nlmsg_flags = NLM_F_REQUEST;
  request.link.ifi_family = AF_UNSPEC;
  request.link.ifi_index = index;
  std::optional<Link> result;
  exchange(request.header, [&result](const nlmsghdr& message) {
    if (message.nlmsg_type != RTM_NEWLINK || message.nlmsg_len < NLMSG_LENGTH(sizeof(ifinfomsg))) {
      return;
    }
    const auto* link = static_cast<const ifinfomsg*>(NLMSG_DATA(&message));
    Link found;
    found.flags = link->ifi_flags;
    const auto* attributes = reinterpret_cast<const char*>(link) + NLMSG_ALIGN(sizeof(ifinfomsg));
    forEachAttribute(attributes, message.nlmsg_len - NLMSG_LENGTH(sizeof(ifinfomsg)),
                     [&found](unsigned short type, const char* data, std::size_t length) {
                       if (type == IFLA_IFNAME) found.name.assign(data, strnlen(data, length));
                     });
    result = std::move(found);
  });
  return result;
}

// Up, and with its lower layer up (carrier): the kernel's IFF_RUNNING.
bool isUsable(const std::optional<Link>& link) {
  return link && (link->flags & IFF_UP) != 0 && (link->flags & IFF_RUNNING) != 0;
}

// The route the kernel would use to reach `target`; nothing inside when it
// has none. False when the kernel could not be asked.
bool routeTo(const ReachabilityTarget& target, std::optional<Route>& route) {
  struct {
    nlmsghdr header;
    rtmsg route;
    char attributes[64];
  } request{};
  const std::size_t addressLength = target.family == AF_INET6 ? 16 : 4;
  request.header.nlmsg_type = RTM_GETROUTE;
  request.header.nlmsg_flags = NLM_F_REQUEST;
  request.route.rtm_family = static_cast<unsigned char>(target.family);
  request.route.rtm_dst_len = static_cast<unsigned char>(addressLength * 8);
  auto* attribute = reinterpret_cast<rtattr*>(request.attributes);
  attribute->rta_type = RTA_DST;
  attribute->rta_len = static_cast<unsigned short>(RTA_LENGTH(addressLength));
  std::memcpy(RTA_DATA(attribute), target.address.data(), addressLength);
  request.header.nlmsg_len =
      static_cast<std::uint32_t>(NLMSG_LENGTH(sizeof(rtmsg)) + RTA_ALIGN(attribute->rta_len));
  bool answered = false;
  const bool asked = exchange(request.header, [&](const nlmsghdr& message) {
    answered = true;
    // An error answer (no route to the network, to the host) leaves it empty.
    route = routeFrom(message);
  });
  return asked && answered;
}

// The default route (lowest metric) whose link is usable, over `family` or,
// for AF_UNSPEC, over IPv4 or IPv6.
bool defaultRoute(int family, std::optional<Route>& best) {
  if (family == AF_UNSPEC) {
    return defaultRoute(AF_INET, best) && (best || defaultRoute(AF_INET6, best));
  }
  struct {
    nlmsghdr header;
    rtmsg route;
  } request{};
  request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtmsg));
  request.header.nlmsg_type = RTM_GETROUTE;
  request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.route.rtm_family = static_cast<unsigned char>(family);
  std::vector<Route> defaults;
  const bool asked = exchange(request.header, [&defaults](const nlmsghdr& message) {
    if (!isDefaultInMain(message)) return;
    if (auto route = routeFrom(message)) defaults.push_back(*route);
  });
  if (!asked) return false;
  for (const auto& route : defaults) {
    if ((!best || route.priority < best->priority) && isUsable(linkOf(route.oif))) best = route;
  }
  return true;
}

}  // namespace

std::optional<std::uint32_t> KernelRouteQuery::flagsFor(const ReachabilityTarget& target) {
  std::optional<Route> route;
  const bool asked = target.any ? defaultRoute(target.family, route) : routeTo(target, route);
  if (!asked) return std::nullopt;
  if (!route) return 0u;
  namespace F = ReachabilityFlags;
  if (route->type == RTN_LOCAL) return F::Reachable | F::IsLocalAddress | F::IsDirect;
  if (route->type != RTN_UNICAST) return 0u;
  const auto link = linkOf(route->oif);
  if (!isUsable(link)) return 0u;
  std::uint32_t flags = F::Reachable;
  if (!route->gateway) flags |= F::IsDirect;
  if (networkLinkKindOf(link->name) == NetworkLinkKind::cellular) flags |= F::IsWWAN;
  return flags;
}

}  // namespace quorvel::platform
