#include "quorvel/platform/network_reachability.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include "quorvel/platform/run_loop.h"
#include "quorvel/platform/run_loop_source.h"

namespace quorvel::platform {
namespace {

int openChangeSocket() {
  const int fd = ::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
  if (fd < 0) return -1;
  sockaddr_nl local{};
  local.nl_family = AF_NETLINK;
  local.nl_groups =
      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (::bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) < 0) {
    ::close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

// The change socket as a run-loop source. Its messages only say that
// something changed: they are drained and the flags read again, once per
// wake-up however many arrived (a link going down sends a burst).
class NetworkReachability::Source final : public RunLoopSource {
 public:
  Source(int fd, ReachabilityTarget target, Callback callback, std::optional<std::uint32_t> last)
      : fd_(fd), target_(target), callback_(std::move(callback)), last_(last) {}
  ~Source() override { close(); }

  void close() {
    std::lock_guard lock(mutex_);
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    callback_ = nullptr;
  }

  void loopEntered() override {}
  void loopExited() override {}

  void descriptors(std::vector<pollfd>& watched) override {
    std::lock_guard lock(mutex_);
    if (fd_ >= 0) watched.push_back(pollfd{fd_, POLLIN, 0});
  }

  void perform(std::span<const pollfd>) override {
    if (!drain()) return;
    const auto now = KernelRouteQuery::flagsFor(target_);
    Callback callback;
    {
      std::lock_guard lock(mutex_);
      if (fd_ < 0 || now == last_) return;
      last_ = now;
      callback = callback_;  // a copy: the callback may unschedule
    }
    if (callback) callback(now.value_or(0));
  }

 private:
  // Reads what is queued; false once the source was closed.
  bool drain() {
    std::lock_guard lock(mutex_);
    if (fd_ < 0) return false;
    char buffer[8192];
    // Bounded: a flood of changes must not hold the loop; what is left wakes
    // the next poll. ENOBUFS (messages lost) only means "read again".
    for (int reads = 0; reads < 64; ++reads) {
      const auto got = ::recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
      if (got < 0 && errno != EINTR && errno != ENOBUFS) break;
    }
    return true;
  }

  std::mutex mutex_;
  int fd_;
  const ReachabilityTarget target_;
  Callback callback_;
  std::optional<std::uint32_t> last_;
};

std::unique_ptr<NetworkReachability> NetworkReachability::createWithAddress(
    const sockaddr* address) {
  if (address == nullptr) return nullptr;
  ReachabilityTarget target;
  target.family = address->sa_family;
  if (address->sa_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(address);
    std::memcpy(target.address.data(), &v4->sin_addr, 4);
    target.any = v4->sin_addr.s_addr == htonl(INADDR_ANY);
  } else if (address->sa_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(address);
    std::memcpy(target.address.data(), &v6->sin6_addr, 16);
    target.any = IN6_IS_ADDR_UNSPECIFIED(&v6->sin6_addr);
  } else {
    return nullptr;
  }
  return std::make_unique<NetworkReachability>(target);
}

std::unique_ptr<NetworkReachability> NetworkReachability::createWithName(std::string_view name) {
  if (name.empty()) return nullptr;
  const std::string text(name == "localhost" ? std::string_view("127.0.0.1") : name);
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;  // literals only: never a look-up
  addrinfo* found = nullptr;
  if (::getaddrinfo(text.c_str(), nullptr, &hints, &found) == 0 && found != nullptr) {
    auto made = createWithAddress(found->ai_addr);
    ::freeaddrinfo(found);
    if (made) return made;
  }
  ReachabilityTarget general;
  general.family = AF_UNSPEC;
  general.any = true;
  return std::make_unique<NetworkReachability>(general);
}

NetworkReachability::~NetworkReachability() {
  unschedule();
}

std::optional<std::uint32_t> NetworkReachability::flags() const {
  return KernelRouteQuery::flagsFor(target_);
}

bool NetworkReachability::schedule(RunLoop* loop, Callback callback) {
  unschedule();
  if (loop == nullptr) return false;
  const int fd = openChangeSocket();
  if (fd < 0) return false;
  // Read after the socket is open, so that no change falls between the two.
  source_ = std::make_shared<Source>(fd, target_, std::move(callback), flags());
  loop_ = loop;
  loop->addSource(source_);
  return true;
}

void NetworkReachability::unschedule() {
  if (!source_) return;
  RunLoop::removeSourceIfAlive(loop_, source_);
  // A pump under way may still hold the source: closed, it watches nothing
  // and calls nobody.
  source_->close();
  source_.reset();
  loop_ = nullptr;
}

}  // namespace quorvel::platform
