#include "quorvel/transport_poller.h"

#include <algorithm>
#include <cerrno>

#include <curl/curl.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace quorvel {
namespace {

void drain(int fd) {
  std::uint64_t count = 0;
  while (::read(fd, &count, sizeof count) > 0) {
  }
}

bool control(int epoll, int operation, int fd, std::uint32_t events) {
  epoll_event event{};
  event.events = events;
  event.data.fd = fd;
  return ::epoll_ctl(epoll, operation, fd, &event) == 0;
}

std::uint32_t epollEvents(int curlWhat) {
  std::uint32_t events = 0;
  if ((curlWhat & CURL_POLL_IN) != 0) events |= EPOLLIN;
  if ((curlWhat & CURL_POLL_OUT) != 0) events |= EPOLLOUT;
  return events;
}

int curlEvents(bool in, bool out, bool error) {
  int flags = 0;
  if (in) flags |= CURL_CSELECT_IN;
  if (out) flags |= CURL_CSELECT_OUT;
  if (error) flags |= CURL_CSELECT_ERR;
  return flags;
}

}  // namespace

TransportPoller::TransportPoller() {
  workerSet_ = ::epoll_create1(EPOLL_CLOEXEC);
  hostSet_ = ::epoll_create1(EPOLL_CLOEXEC);
  wakeFd_ = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  timerFd_ = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  if (!ready()) return;
  control(workerSet_, EPOLL_CTL_ADD, wakeFd_, EPOLLIN);
  control(workerSet_, EPOLL_CTL_ADD, timerFd_, EPOLLIN);
}

TransportPoller::~TransportPoller() {
  for (int fd : {timerFd_, wakeFd_, hostSet_, workerSet_}) {
    if (fd >= 0) ::close(fd);
  }
}

bool TransportPoller::ready() const {
  return workerSet_ >= 0 && hostSet_ >= 0 && wakeFd_ >= 0 && timerFd_ >= 0;
}

int TransportPoller::setFd(Set set) const {
  return set == Set::host ? hostSet_ : workerSet_;
}

void TransportPoller::leaveSet(int socket, Watched& watched) {
  if (watched.set == Set::none) return;
  ::epoll_ctl(setFd(watched.set), EPOLL_CTL_DEL, socket, nullptr);
  const bool wasHost = watched.set == Set::host;
  watched.set = Set::none;
  watched.registered = 0;
  if (wasHost) refreshHostSnapshot();
}

void TransportPoller::watch(int socket, int curlWhat, bool forHost) {
  Watched& watched = sockets_[socket];
  const std::uint32_t wantedBefore = watched.wanted;
  if (curlWhat == CURL_POLL_REMOVE) {
    if (!watched.ownSocket) {
      leaveSet(socket, watched);
      sockets_.erase(socket);
      return;
    }
    // Kept in its set: the next transfer on this connection most likely
    // asks for the same events again.
    watched.wanted = 0;
    if (watched.set == Set::host && wantedBefore != 0) refreshHostSnapshot();
    return;
  }
  const Set set = forHost ? Set::host : Set::worker;
  watched.wanted = epollEvents(curlWhat);
  if (watched.set != set) leaveSet(socket, watched);
  if (watched.set != set || watched.registered != watched.wanted) {
    const bool added =
        watched.set != Set::none && control(setFd(set), EPOLL_CTL_MOD, socket, watched.wanted);
    if (added || control(setFd(set), EPOLL_CTL_ADD, socket, watched.wanted)) {
      watched.set = set;
      watched.registered = watched.wanted;
    }
  }
  if (set == Set::host && (watched.wanted != wantedBefore || !hostSnapshotHas(socket))) {
    refreshHostSnapshot();
  }
}

bool TransportPoller::hostSnapshotHas(int socket) const {
  std::lock_guard lock(hostMutex_);
  return std::any_of(hostSnapshot_.begin(), hostSnapshot_.end(),
                     [socket](const pollfd& p) { return p.fd == socket; });
}

void TransportPoller::socketOpened(int socket) {
  // Whatever was known of this number belonged to a descriptor now closed.
  if (const auto it = sockets_.find(socket); it != sockets_.end()) {
    const bool wasHost = it->second.set == Set::host;
    sockets_.erase(it);
    if (wasHost) refreshHostSnapshot();
  }
  sockets_[socket].ownSocket = true;
}

void TransportPoller::socketClosed(int socket) {
  const auto it = sockets_.find(socket);
  if (it == sockets_.end()) return;
  leaveSet(socket, it->second);
  sockets_.erase(it);
}

void TransportPoller::setTimeout(long milliseconds) {
  // No timeout wanted: an armed timer may as well fire; libcurl then finds
  // nothing to do.
  if (milliseconds < 0) return;
  const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  // libcurl counts in whole milliseconds, so the same deadline asked for again
  // comes out a little earlier each time: one armed within a millisecond
  // after it stands, rather than a system call on every turn. "Now" is now.
  const auto slack = milliseconds > 0 ? kTimerSlack : Clock::duration::zero();
  if (timerDeadline_ && *timerDeadline_ <= deadline + slack) return;
  arm(deadline);
}

void TransportPoller::resetTimeout(long milliseconds) {
  if (milliseconds >= 0) {
    arm(Clock::now() + std::chrono::milliseconds(milliseconds));
    return;
  }
  if (!timerDeadline_) return;
  const itimerspec never{};
  if (::timerfd_settime(timerFd_, 0, &never, nullptr) == 0) timerDeadline_.reset();
}

void TransportPoller::arm(Clock::time_point deadline) {
  const auto sinceEpoch = deadline.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
  itimerspec when{};
  when.it_value.tv_sec = seconds.count();
  when.it_value.tv_nsec = std::chrono::nanoseconds(sinceEpoch - seconds).count();
  if (when.it_value.tv_sec == 0 && when.it_value.tv_nsec == 0) when.it_value.tv_nsec = 1;
  // steady_clock is CLOCK_MONOTONIC, the timer's clock.
  if (::timerfd_settime(timerFd_, TFD_TIMER_ABSTIME, &when, nullptr) == 0) {
    timerDeadline_ = deadline;
  }
}

void TransportPoller::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(wakeFd_, &one, sizeof one);
}

int TransportPoller::wait(std::span<epoll_event> events,
                          std::optional<std::chrono::milliseconds> timeout) const {
  const int milliseconds = timeout ? static_cast<int>(timeout->count()) : -1;
  const int count =
      ::epoll_wait(workerSet_, events.data(), static_cast<int>(events.size()), milliseconds);
  if (count < 0) return errno == EINTR ? 0 : -1;
  return count;
}

TransportPoller::Ready TransportPoller::sort(std::span<const epoll_event> events) {
  Ready ready;
  auto socketEvent = [&](int fd, std::uint32_t mask) {
    const auto it = sockets_.find(fd);
    if (it == sockets_.end() || it->second.wanted == 0) {
      // An idle connection the server closed, or a socket libcurl let go
      // of: out of its set until libcurl watches it again.
      if (it != sockets_.end()) {
        leaveSet(fd, it->second);
      } else {
        ::epoll_ctl(workerSet_, EPOLL_CTL_DEL, fd, nullptr);
        ::epoll_ctl(hostSet_, EPOLL_CTL_DEL, fd, nullptr);
      }
      return;
    }
    ready.sockets.push_back({fd, curlEvents((mask & EPOLLIN) != 0, (mask & EPOLLOUT) != 0,
                                            (mask & (EPOLLERR | EPOLLHUP)) != 0)});
  };
  for (const auto& event : events) {
    const int fd = event.data.fd;
    if (fd == wakeFd_) {
      drain(wakeFd_);
    } else if (fd == timerFd_) {
      drain(timerFd_);
      timerDeadline_.reset();
      ready.timerDue = true;
    } else if (fd == hostSet_) {
      // The lent set has events: fetch them.
      epoll_event inner[64];
      const int count = ::epoll_wait(hostSet_, inner, 64, 0);
      for (int i = 0; i < count; ++i) socketEvent(inner[i].data.fd, inner[i].events);
    } else {
      socketEvent(fd, event.events);
    }
  }
  return ready;
}

void TransportPoller::hostDescriptors(std::vector<pollfd>& watched) {
  std::lock_guard lock(hostMutex_);
  if (lent_) return;
  watched.insert(watched.end(), hostSnapshot_.begin(), hostSnapshot_.end());
}

TransportPoller::Ready TransportPoller::sortHost(std::span<const pollfd> ready) {
  Ready sorted;
  for (const auto& p : ready) {
    if (p.revents == 0) continue;
    const auto it = sockets_.find(p.fd);
    // Closed or moved since the loop went to sleep: not the loop's any more.
    if (it == sockets_.end() || it->second.set != Set::host || it->second.wanted == 0) continue;
    sorted.sockets.push_back(
        {p.fd, curlEvents((p.revents & POLLIN) != 0, (p.revents & POLLOUT) != 0,
                          (p.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0)});
  }
  return sorted;
}

void TransportPoller::lendHostSet() {
  std::lock_guard lock(hostMutex_);
  if (lent_) return;
  lent_ = control(workerSet_, EPOLL_CTL_ADD, hostSet_, EPOLLIN);
}

void TransportPoller::reclaimHostSet() {
  std::lock_guard lock(hostMutex_);
  if (!lent_) return;
  ::epoll_ctl(workerSet_, EPOLL_CTL_DEL, hostSet_, nullptr);
  lent_ = false;
}

bool TransportPoller::hostSetBusy() const {
  std::lock_guard lock(hostMutex_);
  return !hostSnapshot_.empty();
}

void TransportPoller::refreshHostSnapshot() {
  std::vector<pollfd> snapshot;
  for (const auto& [socket, watched] : sockets_) {
    if (watched.set != Set::host || watched.wanted == 0) continue;
    short events = 0;
    if ((watched.wanted & EPOLLIN) != 0) events |= POLLIN;
    if ((watched.wanted & EPOLLOUT) != 0) events |= POLLOUT;
    snapshot.push_back(pollfd{socket, events, 0});
  }
  std::lock_guard lock(hostMutex_);
  hostSnapshot_.swap(snapshot);
}

}  // namespace quorvel
