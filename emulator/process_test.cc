#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <httplib.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

// Reads one line from `fd`, waiting at most `timeoutMs` in total.
std::string readLine(int fd, int timeoutMs) {
  std::string line;
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (std::chrono::steady_clock::now() < deadline) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, 100) <= 0) continue;
    char c = 0;
    if (read(fd, &c, 1) != 1) break;
    if (c == '\n') return line;
    line.push_back(c);
  }
  return line;
}

// Waits up to `timeoutMs` for the child; answers its wait status or -1.
int waitFor(pid_t pid, int timeoutMs) {
  for (int waited = 0; waited < timeoutMs; waited += 20) {
    int status = 0;
    if (waitpid(pid, &status, WNOHANG) == pid) return status;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return -1;
}

TEST(EmulatorProcess, PrintsItsUrlFirstAndStopsOnSigterm) {
  int out[2];
  ASSERT_EQ(pipe(out), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  const char* argv[] = {QVK_EMULATOR_BINARY, "--port", "0", "--quiet", nullptr};
  pid_t pid = 0;
  ASSERT_EQ(posix_spawn(&pid, QVK_EMULATOR_BINARY, &actions, nullptr,
                        const_cast<char* const*>(argv), environ),
            0);
  posix_spawn_file_actions_destroy(&actions);
  close(out[1]);

  std::string url = readLine(out[0], 10000);
  close(out[0]);
  ASSERT_EQ(url.rfind("http://127.0.0.1:", 0), 0u) << url;
  int port = std::stoi(url.substr(url.rfind(':') + 1));
  EXPECT_GT(port, 0);

  httplib::Client client("127.0.0.1", port);
  client.set_read_timeout(5, 0);
  auto res = client.Get("/_emulator/health");
  ASSERT_TRUE(res);
  EXPECT_EQ(res->status, 200);

  ASSERT_EQ(kill(pid, SIGTERM), 0);
  int status = waitFor(pid, 10000);
  if (status == -1) {
    kill(pid, SIGKILL);
    waitFor(pid, 5000);
    FAIL() << "qvk-emulator did not stop on SIGTERM";
  }
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
