#pragma once

// Test support: runs the real qvk binary as a child process. Header-only so
// that it stays out of the qvk_cli library.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qvk::testing {

// A loopback port with nothing listening: bound, then closed again.
inline int closedLoopbackPort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  close(fd);
  return ntohs(address.sin_port);
}

struct InvocationResult {
  int status = -1;  // the exit status; -1 when killed after the time limit
  std::string out;
  std::string err;
};

// One run of `binary` with `args`, without the QVK_* variables of the test's
// own environment. Standard input is a pipe that stays open until finish(),
// so that a test can write a line, watch what the child does, and write the
// next. Output goes to in-memory files, so a chatty child never blocks.
class QvkInvocation {
 public:
  static constexpr std::chrono::seconds kTimeLimit{60};

  QvkInvocation(const std::string& binary, const std::vector<std::string>& args) {
    // A child that has already ended must fail a write, not kill the test.
    std::signal(SIGPIPE, SIG_IGN);
    // Everything the child needs is built before fork(): after it, only
    // async-signal-safe calls.
    std::vector<std::string> argvStore{binary};
    argvStore.insert(argvStore.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : argvStore) argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (char** e = environ; *e != nullptr; ++e) {
      if (std::string_view(*e).substr(0, 4) != "QVK_") envp.push_back(*e);
    }
    envp.push_back(nullptr);
    int input[2];
    if (pipe2(input, O_CLOEXEC) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(input[0], STDIN_FILENO);
      dup2(out_, STDOUT_FILENO);
      dup2(err_, STDERR_FILENO);
      execve(argv[0], argv.data(), envp.data());
      _exit(127);
    }
    close(input[0]);
    inputFd_ = input[1];
  }

  ~QvkInvocation() {
    if (pid_ > 0 && status_ == kRunning) finish(std::chrono::seconds(0));
    close(out_);
    close(err_);
  }

  QvkInvocation(const QvkInvocation&) = delete;
  QvkInvocation& operator=(const QvkInvocation&) = delete;

  // Writes all of `text` to the child's standard input; false when it cannot.
  bool write(std::string_view text) {
    while (!text.empty() && inputFd_ >= 0) {
      auto written = ::write(inputFd_, text.data(), text.size());
      if (written <= 0) return false;
      text.remove_prefix(static_cast<std::size_t>(written));
    }
    return text.empty();
  }

  // What the child wrote to standard output so far.
  std::string outSoFar() const { return contents(out_); }
  // Sends `signal` to the child while it runs.
  bool signal(int signal) const {
    return pid_ > 0 && status_ == kRunning && kill(pid_, signal) == 0;
  }

  // Closes standard input and waits for the child's end, killing it after `timeout`.
  InvocationResult finish(std::chrono::seconds timeout = kTimeLimit) {
    if (inputFd_ >= 0) close(inputFd_);
    inputFd_ = -1;
    if (pid_ > 0 && status_ == kRunning) status_ = waitBounded(pid_, timeout);
    return {pid_ > 0 ? status_ : -1, contents(out_), contents(err_)};
  }

  // Runs the binary to its end with `input` on standard input.
  static InvocationResult run(const std::string& binary, const std::vector<std::string>& args,
                              const std::string& input = "") {
    QvkInvocation invocation(binary, args);
    invocation.write(input);
    return invocation.finish();
  }

 private:
  static constexpr int kRunning = -2;

  static int waitBounded(pid_t pid, std::chrono::seconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    do {
      if (waitpid(pid, &status, WNOHANG) == pid) {
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    } while (std::chrono::steady_clock::now() < deadline);
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
  }

  static std::string contents(int fd) {
    std::string text;
    char buffer[4096];
    off_t offset = 0;
    for (ssize_t n; (n = pread(fd, buffer, sizeof buffer, offset)) > 0; offset += n) {
      text.append(buffer, static_cast<std::size_t>(n));
    }
    return text;
  }

  int out_ = memfd_create("qvk-out", MFD_CLOEXEC);
  int err_ = memfd_create("qvk-err", MFD_CLOEXEC);
  int inputFd_ = -1;
  pid_t pid_ = -1;
  int status_ = kRunning;
};

}  // namespace qvk::testing
