// The real qvk binary against a real qvk-emulator on loopback.
#include <filesystem>
#include <memory>
#include <thread>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/emulator_process.h"
#include "tools/qvk/qvk_invocation.h"

namespace qvk {
namespace {

using testing::InvocationResult;
using testing::QvkInvocation;
using velmaro::testing::EmulatorProcess;

// A loopback port with nothing listening: bound, then closed again.
int closedPort() {
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

class QvkProcess : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    emulator_ = std::make_unique<EmulatorProcess>(QVK_EMULATOR_BINARY);
  }
  static void TearDownTestSuite() { emulator_.reset(); }

  void SetUp() override {
    ASSERT_TRUE(emulator_->running()) << emulator_->error();
    std::string pattern = "/tmp/qvk-data-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dataDir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dataDir_); }

  // qvk --url <emulator> --data-dir <fresh dir> args...
  InvocationResult qvk(std::vector<std::string> args, const std::string& input = "") const {
    std::vector<std::string> all{"--url", emulator_->url(), "--data-dir", dataDir_};
    all.insert(all.end(), args.begin(), args.end());
    return QvkInvocation::run(QVK_BINARY, all, input);
  }

  // The article views of `articleId` that the emulator received so far.
  static std::size_t viewsOf(std::int64_t articleId) {
    auto views = boost::json::parse(emulator_->get("/_emulator/article_views").body);
    std::size_t count = 0;
    for (const auto& view : views.as_object().at("article_views").as_array()) {
      if (view.as_object().at("article_id").as_int64() == articleId) ++count;
    }
    return count;
  }

  static boost::json::value json(const InvocationResult& result) {
    boost::system::error_code error;
    auto value = boost::json::parse(result.out, error);
    EXPECT_FALSE(error) << "not JSON: " << result.out << "\nstderr: " << result.err;
    return value;
  }

  static std::unique_ptr<EmulatorProcess> emulator_;
  std::string dataDir_;
};

std::unique_ptr<EmulatorProcess> QvkProcess::emulator_;

TEST_F(QvkProcess, CategoriesAsJsonRecords) {
  auto result = qvk({"--json", "hc", "categories"});
  ASSERT_EQ(result.status, 0) << result.err;
  auto categories = json(result).as_array();
  ASSERT_EQ(categories.size(), 3u);
  for (const auto& category : categories) {
    EXPECT_TRUE(category.as_object().at("identifier").is_int64());
    EXPECT_TRUE(category.as_object().at("name").is_string());
  }
}

TEST_F(QvkProcess, TableHasACountLine) {
  auto result = qvk({"hc", "categories"});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_NE(result.out.find("ID  NAME"), std::string::npos) << result.out;
  EXPECT_NE(result.out.find("\n3 categories\n"), std::string::npos) << result.out;
}

TEST_F(QvkProcess, SettingsByPropertyName) {
  auto result = qvk({"--json", "settings", "help-center"});
  ASSERT_EQ(result.status, 0) << result.err;
  auto settings = json(result).as_object();
  EXPECT_EQ(settings.at("locale").as_string(), "en-us");
  EXPECT_TRUE(settings.at("enabled").is_bool());
  EXPECT_TRUE(settings.at("helpCenterArticleVotingEnabled").is_bool());

  auto support = json(qvk({"--json", "settings"})).as_object();
  EXPECT_TRUE(support.at("conversationSettings").as_object().at("enabled").is_bool());
  EXPECT_TRUE(support.at("contactUsSettings").as_object().at("tags").is_array());
}

TEST_F(QvkProcess, SearchWithTheLocaleOverride) {
  auto result = qvk({"--json", "--locale", "de", "hc", "search", "Zahlung"});
  ASSERT_EQ(result.status, 0) << result.err;
  auto articles = json(result).as_array();
  ASSERT_FALSE(articles.empty());
  EXPECT_EQ(articles[0].as_object().at("locale").as_string(), "de");
}

TEST_F(QvkProcess, RefusedConnectionIsAJsonErrorWithStatusOne) {
  std::string url = "http://127.0.0.1:" + std::to_string(closedPort());
  auto result = QvkInvocation::run(
      QVK_BINARY, {"--url", url, "--data-dir", dataDir_, "--json", "hc", "categories"});
  EXPECT_EQ(result.status, 1);
  auto error = json(result).as_object().at("error").as_object();
  EXPECT_EQ(error.at("domain").as_string(), "quorvel.transport");
  EXPECT_EQ(error.at("code").as_int64(), -1004);
  EXPECT_FALSE(error.at("description").as_string().empty());

  auto text =
      QvkInvocation::run(QVK_BINARY, {"--url", url, "--data-dir", dataDir_, "hc", "categories"});
  EXPECT_EQ(text.status, 1);
  EXPECT_NE(text.err.find("is qvk-emulator running at " + url + "?"), std::string::npos)
      << text.err;
}

TEST_F(QvkProcess, UsageErrorsExitTwoAndMissingUrlOne) {
  auto usage = qvk({"hc", "frobnicate"});
  EXPECT_EQ(usage.status, 2);
  EXPECT_EQ(usage.err.rfind("'frobnicate' is not a command of 'hc'\n", 0), 0u) << usage.err;
  auto noUrl = QvkInvocation::run(QVK_BINARY, {"--data-dir", dataDir_, "hc", "categories"});
  EXPECT_EQ(noUrl.status, 1);
  EXPECT_NE(noUrl.err.find("pass --url or set QVK_URL"), std::string::npos) << noUrl.err;
}

TEST_F(QvkProcess, ShellRecordsTheArticleViewWithTheLastSearch) {
  auto search = qvk({"--json", "hc", "search", "password"});
  ASSERT_EQ(search.status, 0) << search.err;
  auto found = json(search).as_array();
  ASSERT_FALSE(found.empty());
  auto articleId = found[0].as_object().at("identifier").as_int64();

  auto session = qvk({"shell"}, "# a comment line\nhc search \"password\"\nhc article " +
                                    std::to_string(articleId) + "\nexit\nhc categories\n");
  ASSERT_EQ(session.status, 0) << session.err;
  // The line after `exit` never ran.
  EXPECT_EQ(session.out.find("categories"), std::string::npos) << session.out;

  auto views = boost::json::parse(emulator_->get("/_emulator/article_views").body);
  bool recorded = false;
  for (const auto& view : views.as_object().at("article_views").as_array()) {
    const auto& v = view.as_object();
    if (v.at("article_id").as_int64() != articleId || !v.at("body").is_object()) continue;
    const auto& body = v.at("body").as_object();
    if (body.at("last_search").as_object().at("query").as_string() != "password") continue;
    EXPECT_TRUE(body.at("unique_search_result_click").as_bool());
    recorded = true;
  }
  EXPECT_TRUE(recorded) << boost::json::serialize(views);
}

TEST_F(QvkProcess, ArticleViewAndItsBlipReachTheServiceBeforeExit) {
  const std::int64_t articleId = 360000030017;
  const auto viewsBefore = viewsOf(articleId);
  auto result = qvk({"hc", "article", std::to_string(articleId)});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.rfind("Download invoices\n", 0), 0u) << result.out;

  // The view is recorded after the answer, and its blip only after the view
  // was accepted: both must have left before the process ended.
  EXPECT_EQ(viewsOf(articleId), viewsBefore + 1);
  bool blipped = false;
  auto blips = boost::json::parse(emulator_->get("/_emulator/blips").body);
  for (const auto& blip : blips.as_object().at("blips").as_array()) {
    const auto& b = blip.as_object();
    const auto* pageId = b.if_contains("page_id");
    blipped = blipped || (b.at("type").as_string() == "page_view" && pageId != nullptr &&
                          pageId->as_int64() == articleId);
  }
  EXPECT_TRUE(blipped) << boost::json::serialize(blips);
}

TEST_F(QvkProcess, ShellSendsTheArticleViewWhileWaitingForTheNextLine) {
  const std::int64_t articleId = 360000030017;
  const auto before = viewsOf(articleId);
  QvkInvocation shell(QVK_BINARY, {"--url", emulator_->url(), "--data-dir", dataDir_, "shell"});
  ASSERT_TRUE(shell.write("hc article " + std::to_string(articleId) + "\n"));
  // Input stays open: the view must leave while the shell waits for a line.
  for (int poll = 0; poll < 200 && viewsOf(articleId) == before; ++poll) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  EXPECT_EQ(viewsOf(articleId), before + 1);
  EXPECT_EQ(shell.finish().status, 0);
}

TEST_F(QvkProcess, ShellKeepsGoingAfterABadLine) {
  auto session = qvk({"--json", "shell"}, "hc search 'unterminated\nhc category x\nsettings\n");
  EXPECT_EQ(session.status, 2);
  EXPECT_NE(session.err.find("unterminated"), std::string::npos) << session.err;
  // The settings line still ran and printed its document.
  EXPECT_NE(session.out.find("\"neverRequestEmail\""), std::string::npos) << session.out;
}

TEST_F(QvkProcess, VoteWithVotingOffReportsTheFirstAnswer) {
  ASSERT_EQ(emulator_->control("PUT", "/_emulator/settings", R"({"voting":false})").status, 200);
  auto result = qvk({"--json", "hc", "upvote", "360000030001"});
  emulator_->control("PUT", "/_emulator/settings", R"({"voting":true})");
  EXPECT_EQ(result.status, 1);
  auto error = json(result).as_object().at("error").as_object();
  EXPECT_EQ(error.at("domain").as_string(), "com.quorvel.support");
  EXPECT_EQ(error.at("code").as_int64(), 2001);
}

}  // namespace
}  // namespace qvk
