#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include <poll.h>
#include <sys/epoll.h>

namespace quorvel {

// What the HTTP transport waits for: the sockets libcurl asks it to watch, a
// timer for libcurl's timeouts and a wake-up signal.
//
// Sockets live in one of two epoll sets. The transport's thread waits on the
// first (with the timer and the wake-up). The second holds the sockets of
// transfers that the host's run loop finishes itself: while that loop sleeps
// it polls them directly, so that an answer wakes the thread that wants it
// and no other. Whenever the loop does not watch them, the second set is
// "lent" to the transport's thread as a member of the first.
//
// Requests on a kept-alive connection follow one another quickly, so the
// poller avoids system calls that would only repeat the last state: a socket
// libcurl stops watching stays registered until an event shows it must be
// disarmed, and the timer is only ever moved earlier (a timer that fires
// early only makes libcurl check its timeouts once more).
//
// Not synchronized, except where noted: the transport calls it under the lock
// with which it drives libcurl.
class TransportPoller {
 public:
  using Clock = std::chrono::steady_clock;

  struct SocketEvent {
    int socket;
    int curlEvents;  // CURL_CSELECT_IN / _OUT / _ERR
  };
  struct Ready {
    std::vector<SocketEvent> sockets;
    bool timerDue = false;
  };

  TransportPoller();
  ~TransportPoller();
  TransportPoller(const TransportPoller&) = delete;
  TransportPoller& operator=(const TransportPoller&) = delete;

  // False when a descriptor could not be made.
  bool ready() const;

  // libcurl's wish for a descriptor (CURL_POLL_IN, _OUT, _INOUT or _REMOVE),
  // and whether the host's loop finishes the transfer that uses it.
  void watch(int socket, int curlWhat, bool forHost);
  // A connection's socket was made, or is being closed. Only such sockets
  // stay registered after libcurl stops watching them: libcurl closes its
  // other descriptors (a name lookup's, say) without telling, and the number
  // may come back as a new socket that must be registered anew.
  void socketOpened(int socket);
  void socketClosed(int socket);

  // libcurl's timer: no timeout (< 0), now (0), or in `milliseconds`.
  void setTimeout(long milliseconds);

  // The same, but an earlier deadline already armed is moved (or, with no
  // timeout, the timer disarmed): for a deadline that no longer holds.
  void resetTimeout(long milliseconds);

  // Safe from any thread.
  void wake();

  // The transport's thread. Waits up to `timeout` (forever when empty) for
  // its sockets, the timer, a wake-up or the lent set; the number of events
  // put in `events` (0 when interrupted, -1 on failure). Safe without the lock.
  int wait(std::span<epoll_event> events, std::optional<std::chrono::milliseconds> timeout) const;
  // What the events wait() gave mean for libcurl. Events of sockets libcurl
  // no longer watches are dropped, and such a socket leaves its set.
  Ready sort(std::span<const epoll_event> events);

  // The host's loop. Appends the sockets it watches while it sleeps (none
  // while the set is lent); safe without the lock.
  void hostDescriptors(std::vector<pollfd>& watched);
  // What poll(2) reported for them, for libcurl.
  Ready sortHost(std::span<const pollfd> ready);
  // Lends the host's set to the transport's thread, or takes it back; safe
  // without the lock.
  void lendHostSet();
  void reclaimHostSet();
  // True when sockets of the host's set are watched for a transfer.
  bool hostSetBusy() const;

 private:
  enum class Set { none, worker, host };
  struct Watched {
    bool ownSocket = false;  // opened by the transport; its close is reported
    Set set = Set::none;
    std::uint32_t registered = 0;  // what its epoll set reports for it
    std::uint32_t wanted = 0;      // what libcurl asked for
  };

  int setFd(Set set) const;
  void leaveSet(int socket, Watched& watched);
  void refreshHostSnapshot();
  bool hostSnapshotHas(int socket) const;
  void arm(Clock::time_point deadline);

  int workerSet_ = -1;
  int hostSet_ = -1;
  int wakeFd_ = -1;
  int timerFd_ = -1;
  std::unordered_map<int, Watched> sockets_;
  std::optional<Clock::time_point> timerDeadline_;
  // How late the armed timer may fire rather than be armed again.
  static constexpr std::chrono::milliseconds kTimerSlack{1};

  // What the host's loop polls, and whether the set is lent; the loop reads
  // them without the transport's lock.
  mutable std::mutex hostMutex_;
  std::vector<pollfd> hostSnapshot_;
  bool lent_ = false;
};

}  // namespace quorvel
