#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace velmaro::testing {

// The answer of one call to the emulator's scenario controls.
struct ControlAnswer {
  int status = 0;  // 0: no answer (connection failed)
  std::string body;
};

// A qvk-emulator child process on a free loopback port, for tests and demos.
// It is started with "--port 0 --quiet" plus the caller's options; its base
// URL is the first line of its standard output. The destructor stops it with
// SIGTERM and waits for it (SIGKILL after a bounded wait).
class EmulatorProcess {
 public:
  explicit EmulatorProcess(std::string binaryPath, std::vector<std::string> extraOptions = {},
                           std::chrono::milliseconds startTimeout = std::chrono::seconds(10));
  ~EmulatorProcess();
  EmulatorProcess(const EmulatorProcess&) = delete;
  EmulatorProcess& operator=(const EmulatorProcess&) = delete;

  // False when the binary could not be started or printed no URL in time;
  // error() then says why.
  bool running() const { return !url_.empty(); }
  const std::string& error() const { return error_; }
  // "http://127.0.0.1:<port>", or empty when it did not start.
  const std::string& url() const { return url_; }
  pid_t pid() const { return pid_; }

  // Stops the process now (SIGTERM, bounded wait); the exit status as
  // waitpid gives it, or nothing when it was not running.
  std::optional<int> stop();

  // The scenario controls under /_emulator/ (path with or without that prefix).
  ControlAnswer control(const std::string& method, const std::string& path,
                        const std::string& jsonBody = "") const;
  ControlAnswer get(const std::string& path) const { return control("GET", path); }

 private:
  bool readFirstLine(std::chrono::milliseconds timeout);

  pid_t pid_ = -1;
  int stdoutFd_ = -1;
  std::string url_;
  std::string error_;
};

// One HTTP call over loopback to `baseUrl` + `path` (no TLS, short timeouts).
ControlAnswer httpCall(const std::string& baseUrl, const std::string& method,
                       const std::string& path, const std::string& body = "");

// A loopback URL where nothing listens (the port was free a moment ago): a
// service that cannot be reached.
std::string closedLoopbackUrl();

}  // namespace velmaro::testing
