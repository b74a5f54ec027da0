#pragma once

// Test support: runs the real qvk binary as a child process. Header-only so
// that it stays out of the qvk_cli library.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qvk::testing {

struct InvocationResult {
  int status = -1;  // the exit status; -1 when killed after the time limit
  std::string out;
  std::string err;
};

// Runs `binary` with `args`, `input` on standard input, without the QVK_*
// variables of the test's own environment, and kills it after `timeout`.
// Output goes through temporary files, so a chatty child never blocks.
class QvkInvocation {
 public:
  static InvocationResult run(const std::string& binary, const std::vector<std::string>& args,
                              const std::string& input = "",
                              std::chrono::seconds timeout = std::chrono::seconds(60)) {
    TempFile in("in");
    TempFile out("out");
    TempFile err("err");
    { std::ofstream(in.path, std::ios::binary) << input; }
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

    pid_t pid = fork();
    if (pid == 0) {
      redirect(in.path, STDIN_FILENO, O_RDONLY);
      redirect(out.path, STDOUT_FILENO, O_WRONLY | O_TRUNC);
      redirect(err.path, STDERR_FILENO, O_WRONLY | O_TRUNC);
      execve(argv[0], argv.data(), envp.data());
      _exit(127);
    }
    InvocationResult result;
    result.status = waitBounded(pid, timeout);
    result.out = read(out.path);
    result.err = read(err.path);
    return result;
  }

 private:
  struct TempFile {
    explicit TempFile(const char* tag) {
      std::string pattern = std::string("/tmp/qvk-test-") + tag + "-XXXXXX";
      int fd = mkstemp(pattern.data());
      if (fd >= 0) close(fd);
      path = pattern;
    }
    ~TempFile() { unlink(path.c_str()); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    std::string path;
  };

  static void redirect(const std::string& path, int target, int flags) {
    int fd = open(path.c_str(), flags);
    if (fd < 0) _exit(126);
    dup2(fd, target);
    close(fd);
  }

  static int waitBounded(pid_t pid, std::chrono::seconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    while (std::chrono::steady_clock::now() < deadline) {
      if (waitpid(pid, &status, WNOHANG) == pid) {
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill(pid, SIGKILL);
    waitpid(pid, &status, 0);
    return -1;
  }

  static std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
};

}  // namespace qvk::testing
