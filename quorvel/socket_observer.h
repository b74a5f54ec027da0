#pragma once

#include <string_view>

namespace quorvel {

// Told of every socket the transport's transfers open (with the origin it
// connects to) and of every socket libcurl closes, on the thread that drives
// libcurl at that moment.
class SocketObserver {
 public:
  virtual ~SocketObserver() = default;
  virtual void socketOpened(int socket, std::string_view origin) = 0;
  virtual void socketClosed(int socket) = 0;
};

}  // namespace quorvel
