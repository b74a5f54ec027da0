#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include <sys/socket.h>

#include "quorvel/platform/kernel_route_query.h"

namespace quorvel::platform {

class RunLoop;

// The platform's network-reachability service for one address or host name:
// reads the reachability flags (ReachabilityFlags) from the kernel's routing
// tables and, once scheduled on a run loop, calls back on that loop's thread
// whenever they change. Changes come from a routing netlink socket (links,
// IPv4 and IPv6 addresses and routes): the kernel announces them; nothing
// polls. The socket exists only while scheduled.
//
// Host names are not looked up: a look-up needs the very network whose state
// is asked for and may take seconds, and the loop must never wait for one.
// An address literal is watched as that address, "localhost" as 127.0.0.1,
// and any other name as the network in general (a usable default route).
class NetworkReachability {
 public:
  using Callback = std::function<void(std::uint32_t flags)>;

  // Nothing for an address of another family than IPv4 or IPv6.
  static std::unique_ptr<NetworkReachability> createWithAddress(const sockaddr* address);
  // Nothing for an empty name.
  static std::unique_ptr<NetworkReachability> createWithName(std::string_view name);

  explicit NetworkReachability(ReachabilityTarget target) : target_(target) {}
  NetworkReachability(const NetworkReachability&) = delete;
  NetworkReachability& operator=(const NetworkReachability&) = delete;
  // Unschedules first.
  ~NetworkReachability();

  // The flags now; nothing when the kernel cannot be asked. Any thread.
  std::optional<std::uint32_t> flags() const;

  // Opens the change socket and makes it a source of `loop`; `callback` runs
  // on the loop's thread with the new flags each time they differ from the
  // last ones seen. False (and nothing scheduled) without a loop or when the
  // socket cannot be opened; scheduling again replaces the earlier schedule.
  bool schedule(RunLoop* loop, Callback callback);
  // Removes the source and closes its socket; no callback runs afterwards.
  // Call it on the loop's thread (or when the loop does not run).
  void unschedule();

 private:
  class Source;

  ReachabilityTarget target_;
  RunLoop* loop_ = nullptr;
  std::shared_ptr<Source> source_;
};

}  // namespace quorvel::platform
