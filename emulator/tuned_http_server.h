#pragma once

#include <string>

#include <httplib.h>

namespace qvk::emulator {

// cpp-httplib's server with the defaults that ruin latency and concurrency
// changed. Debian compiles the library's defaults into its shared library,
// so they are set here at run time rather than with #defines:
// - TCP_NODELAY on: with Nagle's algorithm a small keep-alive answer waits
//   for the client's delayed ACK, about 40 ms each time;
// - many requests per keep-alive connection instead of 5;
// - one worker thread per open connection a test may hold (a keep-alive
//   connection occupies its worker until it closes);
// - a listen backlog of 1024 instead of the compiled-in 5, which makes 50
//   simultaneous connects overflow and retry after a second.
class TunedHttpServer : public httplib::Server {
 public:
  explicit TunedHttpServer(int workerThreads);

  // Binds to host:port (0 = any free port) and listens with a deep backlog.
  // Answers the bound port, or -1 when the address cannot be bound.
  int bindWithBacklog(const std::string& host, int port, int backlog = 1024);
};

}  // namespace qvk::emulator
