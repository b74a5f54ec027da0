#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quorvel {

// Counts, per origin (scheme and authority of a URL), the sockets the
// transport has open and the transfers it is running, so that it can tell
// when an HTTP/1.1 connection to an origin stands idle in libcurl's pool: a
// request that will go out on such a connection needs no DNS, no connect and
// no TLS handshake. Not synchronized: the transport guards it with the lock
// under which it drives libcurl.
class ConnectionLedger {
 public:
  // "http://host:port" of an absolute URL (user info included, path, query
  // and fragment dropped); the whole text when it has no "://".
  static std::string_view originOf(std::string_view url);

  void socketOpened(int socket, std::string_view origin);
  void socketClosed(int socket);
  void transferStarted(std::string_view origin);
  void transferFinished(std::string_view origin);

  // True when more sockets to `origin` are open than transfers to it run.
  bool hasIdleConnection(std::string_view origin) const;
  // The transfers to `origin` that run.
  std::size_t transfers(std::string_view origin) const;

  std::size_t openSockets() const { return socketOrigins_.size(); }

 private:
  struct Counts {
    std::size_t sockets = 0;
    std::size_t transfers = 0;
  };

  Counts* find(std::string_view origin);
  void forgetIfUnused(std::string_view origin);

  std::unordered_map<int, std::string> socketOrigins_;
  // Looked up by a view of the request's URL, without copying the origin
  // out of it: a call looks its origin up five times or so.
  struct OriginHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view origin) const {
      return std::hash<std::string_view>{}(origin);
    }
  };
  std::unordered_map<std::string, Counts, OriginHash, std::equal_to<>> origins_;
};

}  // namespace quorvel
