// What the real qvk binary says when the URL, the server or the service is
// wrong: each situation must name itself and hint at the matching remedy.
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "emulator/demo_identity.h"
#include "tests/emulator_process.h"
#include "tools/qvk/qvk_invocation.h"

namespace qvk {
namespace {

using testing::QvkInvocation;
using velmaro::testing::EmulatorProcess;

// A loopback server that greets every connection with a line of another
// protocol and closes it. Serves at most kConnections, each accept waiting
// at most 100 ms before the stop flag is checked again.
class NotHttpServer {
 public:
  NotHttpServer() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(fd_, 4);
    socklen_t length = sizeof address;
    getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
  }
  ~NotHttpServer() {
    stop_ = true;
    thread_.join();
    close(fd_);
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

 private:
  static constexpr int kConnections = 20;
  static constexpr int kPolls = 600;  // 60 s in all

  void serve() {
    int served = 0;
    for (int polls = 0; polls < kPolls && served < kConnections && !stop_; ++polls) {
      pollfd waiting{fd_, POLLIN, 0};
      if (poll(&waiting, 1, 100) != 1) continue;
      const int client = accept(fd_, nullptr, nullptr);
      if (client < 0) continue;
      const char greeting[] = "SSH-2.0-Other_1.0\r\n";
      [[maybe_unused]] auto sent = write(client, greeting, sizeof greeting - 1);
      close(client);
      ++served;
    }
  }

  int fd_ = socket(AF_INET, SOCK_STREAM, 0);
  int port_ = 0;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

// Where the run's --url points; kGiven: the row's arguments hold it.
enum class Server { kEmulator, kEmulatorOverTls, kRefused, kNotHttp, kGiven };

struct ErrorCase {
  const char* name;
  std::vector<std::string> args;
  int status;
  std::string err;         // a fragment of standard error
  std::string fault = "";  // queued on the emulator for the settings path before the run
  Server server = Server::kEmulator;
};

void PrintTo(const ErrorCase& c, std::ostream* os) {
  *os << c.name;
}

const std::string kJwt(qvk::emulator::kDemoJwt);

class QvkErrorReports : public ::testing::TestWithParam<ErrorCase> {
 protected:
  static void SetUpTestSuite() {
    emulator_ = std::make_unique<EmulatorProcess>(QVK_EMULATOR_BINARY);
    notHttp_ = std::make_unique<NotHttpServer>();
  }
  static void TearDownTestSuite() {
    emulator_.reset();
    notHttp_.reset();
  }

  void SetUp() override {
    ASSERT_TRUE(emulator_->running()) << emulator_->error();
    std::string pattern = "/tmp/qvk-data-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dataDir_ = pattern;
  }
  void TearDown() override {
    emulator_->control("DELETE", "faults");
    std::filesystem::remove_all(dataDir_);
  }

  static std::string urlOf(Server server) {
    switch (server) {
      case Server::kEmulator:
        return emulator_->url();
      case Server::kEmulatorOverTls:
        return "https://" + emulator_->url().substr(std::string("http://").size());
      case Server::kRefused:
        return "http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort());
      case Server::kNotHttp:
        return notHttp_->url();
      case Server::kGiven:
        break;
    }
    return {};
  }

  static std::unique_ptr<EmulatorProcess> emulator_;
  static std::unique_ptr<NotHttpServer> notHttp_;
  std::string dataDir_;
};

std::unique_ptr<EmulatorProcess> QvkErrorReports::emulator_;
std::unique_ptr<NotHttpServer> QvkErrorReports::notHttp_;

TEST_P(QvkErrorReports, NameWhatWentWrong) {
  const auto& c = GetParam();
  if (!c.fault.empty()) {
    ASSERT_EQ(emulator_->control("POST", "faults", c.fault).status, 201);
  }
  std::vector<std::string> args{"--data-dir", dataDir_};
  if (c.server != Server::kGiven) args.insert(args.end(), {"--url", urlOf(c.server)});
  args.insert(args.end(), c.args.begin(), c.args.end());
  const auto result = QvkInvocation::run(QVK_BINARY, args);
  EXPECT_EQ(result.status, c.status) << result.err;
  EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
}

// A fault for the settings download only, a few times over in case the
// library asks again.
std::string settingsFault(const std::string& fields) {
  return R"({"count":5,"path_prefix":"/api/mobile/sdk/settings",)" + fields + "}";
}

INSTANTIATE_TEST_SUITE_P(
    Situations, QvkErrorReports,
    ::testing::Values(
        ErrorCase{"UrlThatIsNoUrl",
                  {"--url", "not a url", "settings"},
                  2,
                  "--url: \"not a url\" is not an http or https URL with a host",
                  "",
                  Server::kGiven},
        ErrorCase{"UrlOfAnotherScheme",
                  {"--url", "ftp://127.0.0.1/", "hc", "categories"},
                  2,
                  "--url: \"ftp://127.0.0.1/\" is not an http or https URL",
                  "",
                  Server::kGiven},
        ErrorCase{"ZeroTimeout",
                  {"--timeout", "0", "settings"},
                  2,
                  "--timeout: expected a number of seconds greater than 0"},
        ErrorCase{"NegativeTimeout",
                  {"--timeout=-3", "settings"},
                  2,
                  "--timeout: expected a number of seconds greater than 0"},
        ErrorCase{"TimeoutNotANumber",
                  {"--timeout", "soon", "settings"},
                  2,
                  "--timeout: expected a number of seconds greater than 0"},
        ErrorCase{"ServiceFails",
                  {"settings"},
                  1,
                  "(domain com.quorvel.sdk, code 500)\nhint: the service failed; try again later",
                  settingsFault(R"("status":500)")},
        ErrorCase{"IdentityRefused",
                  {"settings"},
                  1,
                  "code 401)\nhint: the service refused the identity; pass --jwt TOKEN",
                  settingsFault(R"("status":401)")},
        ErrorCase{"TokenRefused",
                  {"--jwt", kJwt, "settings"},
                  1,
                  "code 401)\nhint: the token was refused: check it is signed for this app",
                  settingsFault(R"("status":401)")},
        ErrorCase{"ConnectionDropped",
                  {"settings", "attachments"},
                  1,
                  "(domain quorvel.transport, code -1005)\nhint: the connection to http://",
                  settingsFault(R"("drop":true)")},
        ErrorCase{"NoAnswerInTime",
                  {"--timeout", "0.5", "settings"},
                  1,
                  "No answer within 0.5 seconds (domain qvk, code 2)\nhint: is the service at "
                  "http://127.0.0.1:",
                  settingsFault(R"("delay_ms":3000)")},
        ErrorCase{"ConnectionRefused",
                  {"settings"},
                  1,
                  "(domain quorvel.transport, code -1004)\nhint: is qvk-emulator running at "
                  "http://127.0.0.1:",
                  "",
                  Server::kRefused},
        ErrorCase{"TlsToAPlainServer",
                  {"settings"},
                  1,
                  "(domain quorvel.transport, code -1200)\nhint: the TLS connection to https://",
                  "",
                  Server::kEmulatorOverTls},
        ErrorCase{"AnswerThatIsNotHttp",
                  {"settings"},
                  1,
                  "error: The server's answer is not HTTP. (domain quorvel.transport, code "
                  "-1011)\nhint: the server at http://127.0.0.1:",
                  "",
                  Server::kNotHttp}),
    [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace qvk
