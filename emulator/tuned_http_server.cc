#include "emulator/tuned_http_server.h"

#include <sys/socket.h>

namespace qvk::emulator {

TunedHttpServer::TunedHttpServer(int workerThreads) {
  set_tcp_nodelay(true);
  set_keep_alive_max_count(100000);
  set_keep_alive_timeout(5);
  set_payload_max_length(256u * 1024u * 1024u);
  auto threads = static_cast<std::size_t>(workerThreads > 0 ? workerThreads : 8);
  new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
}

int TunedHttpServer::bindWithBacklog(const std::string& host, int port, int backlog) {
  int bound = port;
  if (port == 0) {
    bound = bind_to_any_port(host);
    if (bound < 0) return -1;
  } else if (!bind_to_port(host, port)) {
    return -1;
  }
  // The library has already called listen() with its compiled-in backlog;
  // Linux lets a listening socket be given a larger one by calling it again.
  if (::listen(svr_sock_, backlog) != 0) return -1;
  return bound;
}

}  // namespace qvk::emulator

#if defined(__SANITIZE_THREAD__)
// Debian's libcpp-httplib is not built with ThreadSanitizer, so the
// synchronisation inside it (and in the libstdc++ code it inlines, such as
// the locale caches its regex routing fills) is invisible and reported as
// races between worker threads. Our own code stays checked.
extern "C" const char* __tsan_default_suppressions() {
  return "race:libcpp-httplib.so\n";
}
#endif
