#include "tests/emulator_process.h"

#include <cerrno>
#include <cstring>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <httplib.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace velmaro::testing {

namespace {

constexpr auto kStopTimeout = std::chrono::seconds(5);

std::vector<char*> argvFor(std::string& binary, std::vector<std::string>& args) {
  std::vector<char*> argv{binary.data()};
  for (auto& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  return argv;
}

}  // namespace

EmulatorProcess::EmulatorProcess(std::string binaryPath, std::vector<std::string> extraOptions,
                                 std::chrono::milliseconds startTimeout) {
  std::vector<std::string> args{"--port", "0", "--quiet"};
  args.insert(args.end(), extraOptions.begin(), extraOptions.end());
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC) != 0) {
    error_ = std::string("pipe: ") + std::strerror(errno);
    return;
  }
  // The argument vector is built before fork: the child only calls
  // async-signal-safe functions.
  auto argv = argvFor(binaryPath, args);
  const pid_t parent = ::getpid();
  pid_ = ::fork();
  if (pid_ == 0) {
    // The emulator ends with the process that started it, so a test that
    // crashes leaves none behind, and it inherits none of that process's
    // descriptors (a build lock held by the test runner among them).
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(127);
    ::dup2(fds[1], STDOUT_FILENO);
    ::close_range(3, ~0U, 0);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(fds[1]);
  stdoutFd_ = fds[0];
  if (pid_ < 0) {
    error_ = std::string("fork: ") + std::strerror(errno);
    return;
  }
  if (!readFirstLine(startTimeout)) stop();
}

EmulatorProcess::~EmulatorProcess() {
  stop();
  if (stdoutFd_ >= 0) ::close(stdoutFd_);
}

bool EmulatorProcess::readFirstLine(std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  std::string line;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      error_ = "no URL on standard output in time";
      return false;
    }
    pollfd p{stdoutFd_, POLLIN, 0};
    const int ready = ::poll(&p, 1, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) continue;
    char c = 0;
    const auto n = ::read(stdoutFd_, &c, 1);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error_ = "the emulator exited before printing its URL";
      return false;
    }
    if (c == '\n') break;
    line.push_back(c);
  }
  if (line.rfind("http://", 0) != 0) {
    error_ = "unexpected first line: " + line;
    return false;
  }
  url_ = line;
  return true;
}

std::optional<int> EmulatorProcess::stop() {
  if (pid_ <= 0) return std::nullopt;
  ::kill(pid_, SIGTERM);
  const auto deadline = std::chrono::steady_clock::now() + kStopTimeout;
  int status = 0;
  while (::waitpid(pid_, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      // A hung emulator must not hang the test run.
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, &status, 0);
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  pid_ = -1;
  url_.clear();
  return status;
}

ControlAnswer EmulatorProcess::control(const std::string& method, const std::string& path,
                                       const std::string& jsonBody) const {
  if (url_.empty()) return {};
  const std::string full = path.rfind("/_emulator/", 0) == 0 ? path : "/_emulator/" + path;
  return httpCall(url_, method, full, jsonBody);
}

ControlAnswer httpCall(const std::string& baseUrl, const std::string& method,
                       const std::string& path, const std::string& body) {
  httplib::Client client(baseUrl);
  client.set_connection_timeout(std::chrono::seconds(5));
  client.set_read_timeout(std::chrono::seconds(10));
  httplib::Result result{nullptr, httplib::Error::Unknown};
  const char* type = "application/json";
  if (method == "GET") {
    result = client.Get(path);
  } else if (method == "POST") {
    result = client.Post(path, body, type);
  } else if (method == "PUT") {
    result = client.Put(path, body, type);
  } else if (method == "DELETE") {
    result = client.Delete(path, body, type);
  } else {
    return {};
  }
  if (!result) return {};
  return {result->status, result->body};
}

std::string closedLoopbackUrl() {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  close(fd);
  return "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

}  // namespace velmaro::testing
