// The real qvk binary against a real qvk-emulator on loopback.
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <gtest/gtest.h>
#include <unistd.h>

#include "emulator/demo_identity.h"
#include "tools/qvk/qvk_emulator_test.h"

namespace qvk {
namespace {

using testing::InvocationResult;
using testing::QvkInvocation;
using velmaro::testing::EmulatorProcess;

class QvkProcess : public testing::QvkEmulatorTest {
 protected:
  // What the emulator received so far: its "article_views" or "blips".
  static boost::json::array received(const std::string& list) {
    auto answer = boost::json::parse(emulator_->get("/_emulator/" + list).body);
    return answer.as_object().at(list).as_array();
  }
};

// How a run reaches the service.
enum class Service { kEmulator, kRefused, kNone };

// One run of qvk: its exit status and what it prints.
struct RunCase {
  const char* name;
  std::vector<std::string> args;
  int status;
  std::vector<std::string> out;  // texts on standard output
  std::string err = "";          // a text on standard error
  Service service = Service::kEmulator;
  std::string input = "";
};

void PrintTo(const RunCase& c, std::ostream* os) {
  *os << c.name << ": qvk";
  for (const auto& a : c.args) *os << ' ' << a;
}

const std::string kJwt(qvk::emulator::kDemoJwt);

class QvkRuns : public QvkProcess, public ::testing::WithParamInterface<RunCase> {};

TEST_P(QvkRuns, ExitWithTheirStatusAndPrint) {
  const auto& c = GetParam();
  std::vector<std::string> args{"--data-dir", dataDir_};
  if (c.service == Service::kEmulator) args.insert(args.end(), {"--url", emulator_->url()});
  if (c.service == Service::kRefused)
    args.insert(args.end(),
                {"--url", "http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort())});
  args.insert(args.end(), c.args.begin(), c.args.end());
  auto result = QvkInvocation::run(QVK_BINARY, args, c.input);
  EXPECT_EQ(result.status, c.status) << result.err;
  for (const auto& text : c.out) EXPECT_NE(result.out.find(text), std::string::npos) << text;
  EXPECT_NE(result.err.find(c.err), std::string::npos) << result.err;
  // With --json every line of standard output is a JSON document.
  if (c.args.at(0) != "--json") return;
  std::istringstream lines(result.out);
  for (std::string line; std::getline(lines, line);) {
    boost::system::error_code error;
    boost::json::parse(line, error);
    EXPECT_FALSE(error) << "not JSON: " << line;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, QvkRuns,
    ::testing::Values(
        RunCase{"JsonRecords",
                {"--json", "hc", "categories"},
                0,
                {R"([{"identifier":360000010001,"name":"Getting Started",)",
                 R"({"identifier":360000010003,)"}},
        RunCase{"TableWithCountLine",
                {"hc", "categories"},
                0,
                {"          ID  NAME ", "\n360000010002  Account & Billing  ", "\n3 categories\n"}},
        RunCase{"SettingsByPropertyName",
                {"--json", "settings", "help-center"},
                0,
                {R"({"helpCenterArticleVotingEnabled":true,"enabled":true,"locale":"en-us"})"}},
        RunCase{"SearchInTheLocaleGiven",
                {"--json", "--locale", "de", "hc", "search", "Zahlung"},
                0,
                {R"("title":"Akzeptierte Zahlungsmethoden")", R"("locale":"de")"}},
        RunCase{"RefusedConnectionAsJson",
                {"--json", "hc", "categories"},
                1,
                {R"({"error":{"domain":"quorvel.transport","code":-1004,"description":")"},
                "",
                Service::kRefused},
        RunCase{"RefusedConnectionWithAHint",
                {"hc", "categories"},
                1,
                {},
                "\nhint: is qvk-emulator running at http://127.0.0.1:",
                Service::kRefused},
        RunCase{"NoUrl", {"hc", "categories"}, 1, {}, "pass --url or set QVK_URL", Service::kNone},
        RunCase{"UnknownCommand",
                {"hc", "frobnicate"},
                2,
                {},
                "'frobnicate' is not a command of 'hc'\n"},
        // A bad line makes the status 2 but the lines after it still run.
        RunCase{"ShellKeepsGoingAfterABadLine",
                {"--json", "shell"},
                2,
                {R"({"neverRequestEmail":true,)", R"("conversationSettings":{"enabled":true},)",
                 R"("contactUsSettings":{"tags":[]})"},
                "unterminated",
                Service::kEmulator,
                "hc search 'unterminated\nhc category x\nsettings\n"},
        RunCase{"AnonymousUserWithNothingStoredListsNothing",
                {"--json", "requests", "list"},
                0,
                {R"({"requests":[],"commentingAgents":[]})"}},
        RunCase{
            "RequestsOfTheJwtUserWithTheirAgents",
            {"--json", "--jwt", kJwt, "requests", "list"},
            0,
            {R"("id":"101")", R"("id":"103")", R"("commentingAgents":[{"id":)", R"("agent":true)"}},
        RunCase{"RequestsByStatusAsATable",
                {"--jwt", kJwt, "requests", "list", "--status", "solved"},
                0,
                {"  solved  ", "\n1 request\n"}},
        RunCase{"OneRequest",
                {"--json", "--jwt", kJwt, "requests", "show", "101"},
                0,
                {R"({"request":{"id":"101",)"}},
        RunCase{"UnknownRequestIsTheServicesError",
                {"--json", "--jwt", kJwt, "requests", "show", "999999"},
                1,
                {R"({"error":{"domain":"com.quorvel.sdk","code":404,)"}},
        RunCase{"CommentsEachWithItsUser",
                {"--json", "--jwt", kJwt, "requests", "comments", "101"},
                0,
                {R"({"comments":[{"id":)", R"("user":{"id":)", R"("agent":true)"}},
        RunCase{"AgentCommentsSinceATime",
                {"--jwt", kJwt, "requests", "comments", "101", "--since", "2000-01-01T00:00:00Z",
                 "--agent-only"},
                0,
                {" (agent)  "}},
        RunCase{"AgentOnlyNeedsSince",
                {"--jwt", kJwt, "requests", "comments", "101", "--agent-only"},
                2,
                {},
                "--agent-only requires --since"},
        RunCase{"SinceMustBeAUtcTime",
                {"requests", "comments", "101", "--since", "yesterday"},
                2,
                {},
                "expected an ISO-8601 UTC time"},
        RunCase{"FieldWithoutNumericId",
                {"requests", "create", "--field", "color=red"},
                2,
                {},
                "expected ID=VALUE with a numeric ID"},
        RunCase{"MarkReadOfARequestNotStored",
                {"requests", "mark-read", "101", "1"},
                1,
                {},
                "error: Request 101 is not in this device's request store"},
        RunCase{"RefreshOfARequestNotStored",
                {"requests", "refresh", "101"},
                1,
                {},
                "error: Request 101 is not in this device's request store"},
        RunCase{"NetworkStatusAsOneJsonLine",
                {"--json", "network"},
                0,
                {R"({"status":)", R"(,"connectionRequired":false})"}},
        RunCase{"FormsWithTheirFields",
                {"--json", "forms", "360000040001"},
                0,
                {R"({"ticketForms":[{"formId":360000040001,)", R"("ticketFields":[{"fieldId":)"}},
        RunCase{"FormsAsTables",
                {"forms", "360000040001", "360000040002"},
                0,
                {"Form 360000040001  ", "  REQUIRED  ", "\n2 forms\n"}},
        RunCase{"NoFormIdIsAUsageError", {"forms"}, 2, {}, "ID is required"}),
    [](const auto& param) { return std::string(param.param.name); });

constexpr std::int64_t kArticle = 360000030017;

TEST_F(QvkProcess, ShellSendsTheViewWithTheLastSearchWhileWaitingForTheNextLine) {
  const auto before = received("article_views").size();
  QvkInvocation shell(QVK_BINARY, {"--url", emulator_->url(), "--data-dir", dataDir_, "shell"});
  ASSERT_TRUE(shell.write("# a comment line\nhc search \"password\"\nhc article " +
                          std::to_string(kArticle) + "\n"));
  // Input stays open: the view must leave while the shell waits for a line.
  for (int poll = 0; poll < 200 && received("article_views").size() == before; ++poll) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  const auto views = received("article_views");
  ASSERT_EQ(views.size(), before + 1);
  EXPECT_EQ(views.back().at_pointer("/article_id"), kArticle);
  EXPECT_EQ(views.back().at_pointer("/body/last_search/query"), "password");
  EXPECT_EQ(views.back().at_pointer("/body/unique_search_result_click"), true);
  ASSERT_TRUE(shell.write("exit\nhc categories\n"));
  auto session = shell.finish();
  EXPECT_EQ(session.status, 0) << session.err;
  // The line after `exit` never ran.
  EXPECT_EQ(session.out.find("categories"), std::string::npos) << session.out;
}

TEST_F(QvkProcess, NetworkWatchEndsWith130OnInterrupt) {
  QvkInvocation watch(QVK_BINARY, {"--url", emulator_->url(), "--data-dir", dataDir_, "--json",
                                   "network", "--watch"});
  for (int poll = 0; poll < 200 && watch.outSoFar().find('\n') == std::string::npos; ++poll) {
    std::this_thread::sleep_for(std::chrono::milliseconds(25));
  }
  ASSERT_TRUE(watch.signal(SIGINT));
  const auto result = watch.finish(std::chrono::seconds(10));
  EXPECT_EQ(result.status, 130) << result.err;
  EXPECT_EQ(result.out.rfind(R"({"status":)", 0), 0U) << result.out;
}

TEST_F(QvkProcess, ArticleViewAndItsBlipReachTheServiceBeforeExit) {
  const auto views = received("article_views").size();
  ASSERT_EQ(emulator_->control("DELETE", "blips").status, 204);
  auto result = qvk({"hc", "article", std::to_string(kArticle)});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out.rfind("Download invoices\n", 0), 0u) << result.out;
  // The view is recorded after the answer, and its blip only after the view
  // was accepted: both must have left before the process ended.
  EXPECT_EQ(received("article_views").size(), views + 1);
  const auto blips = boost::json::serialize(received("blips"));
  EXPECT_NE(blips.find(R"("type":"page_view")"), std::string::npos) << blips;
  EXPECT_NE(blips.find(R"("page_id":360000030017)"), std::string::npos) << blips;
}

TEST_F(QvkProcess, VoteWithVotingOffReportsTheFirstAnswer) {
  ASSERT_EQ(emulator_->control("PUT", "/_emulator/settings", R"({"voting":false})").status, 200);
  auto result = qvk({"--json", "hc", "upvote", "360000030001"});
  emulator_->control("PUT", "/_emulator/settings", R"({"voting":true})");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out,
            R"({"error":{"domain":"com.quorvel.support","code":2001,"description":)"
            R"("Help Center Article Voting is disabled, can't execute network request"}})"
            "\n");
}

// A request created in one qvk process, as the next ones see it.
class QvkRequestState : public QvkProcess {
 protected:
  void SetUp() override {
    QvkProcess::SetUp();
    auto created = qvk({"--json", "requests", "create", "--subject", "Broken zip", "--description",
                        "It does not open", "--tag", "zip", "--field", "360000050005=ABC-1234"});
    ASSERT_EQ(created.status, 0) << created.err;
    auto json = boost::json::parse(created.out);
    id_ = std::string(json.at_pointer("/request/id").as_string());
  }

  // `requests updates` in a process of its own, as a document.
  boost::json::value updates() const {
    auto result = qvk({"--json", "requests", "updates"});
    EXPECT_EQ(result.status, 0) << result.err;
    return boost::json::parse(result.out);
  }

  std::string id_;
};

TEST_F(QvkRequestState, CreateSendsTheFieldsAndTheNextProcessListsIt) {
  auto stored = boost::json::parse(emulator_->get("/_emulator/requests/" + id_).body);
  EXPECT_EQ(stored.at_pointer("/request/custom_fields/0/value"), "ABC-1234") << stored;
  auto listed = qvk({"--json", "requests", "list"});
  ASSERT_EQ(listed.status, 0) << listed.err;
  EXPECT_NE(listed.out.find(R"({"id":")" + id_ + R"(",)"), std::string::npos) << listed.out;
  EXPECT_NE(listed.out.find(R"("subject":"Broken zip")"), std::string::npos) << listed.out;
}

TEST_F(QvkRequestState, AnAgentsReplyIsUnreadUntilMarkedRead) {
  ASSERT_EQ(emulator_
                ->control("POST", "/_emulator/requests/" + id_ + "/comments",
                          R"({"body":"Try another archiver."})")
                .status,
            201);
  // The list refreshes the stored counters; updates then answers from them.
  auto listed = qvk({"requests", "list"});
  ASSERT_EQ(listed.status, 0) << listed.err;
  EXPECT_NE(listed.out.find("  *\n"), std::string::npos) << listed.out;
  const auto unread = boost::json::object{{"requestUpdates", {{id_, 1}}}, {"totalUpdates", 1}};
  EXPECT_EQ(updates(), unread);
  auto marked = qvk({"requests", "mark-read", id_, "2"});
  ASSERT_EQ(marked.status, 0) << marked.err;
  const auto read =
      boost::json::object{{"requestUpdates", boost::json::object{}}, {"totalUpdates", 0}};
  EXPECT_EQ(updates(), read);
  ASSERT_EQ(qvk({"requests", "mark-unread", id_}).status, 0);
  EXPECT_EQ(updates(), unread);
  ASSERT_EQ(qvk({"requests", "mark-read", id_, "2"}).status, 0);
  // No view is open in qvk: the refresh signal marks the request unread.
  auto refreshed = qvk({"requests", "refresh", id_});
  ASSERT_EQ(refreshed.status, 0) << refreshed.err;
  EXPECT_EQ(updates(), unread);
}

TEST_F(QvkRequestState, ACommentByTheUserCountsAsRead) {
  auto listed = qvk({"requests", "list"});
  ASSERT_EQ(listed.status, 0) << listed.err;
  auto comment = qvk({"--json", "requests", "comment", id_, "Still broken"});
  ASSERT_EQ(comment.status, 0) << comment.err;
  EXPECT_NE(comment.out.find(R"("body":"Still broken")"), std::string::npos) << comment.out;
  const auto none =
      boost::json::object{{"requestUpdates", boost::json::object{}}, {"totalUpdates", 0}};
  EXPECT_EQ(updates(), none);
}

// Help Center pages stay readable from their stored copies once the service
// is gone, and qvk says that they are copies.
TEST(QvkOffline, PagesComeFromTheirCopiesWhenTheServiceIsGone) {
  EmulatorProcess emulator(QVK_EMULATOR_BINARY, {"--hc-max-age", "1"});
  ASSERT_TRUE(emulator.running()) << emulator.error();
  std::string pattern = "/tmp/qvk-data-XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  const std::vector<std::string> args{"--url", emulator.url(), "--data-dir",
                                      pattern, "hc",           "categories"};
  const auto online = QvkInvocation::run(QVK_BINARY, args, "");
  ASSERT_EQ(online.status, 0) << online.err;
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // past max-age
  emulator.stop();

  const auto offline = QvkInvocation::run(QVK_BINARY, args, "");
  std::filesystem::remove_all(pattern);
  EXPECT_EQ(offline.status, 0) << offline.err;
  EXPECT_EQ(offline.out, online.out);
  EXPECT_NE(offline.err.find("offline: showing the copy from "), std::string::npos) << offline.err;
}

}  // namespace
}  // namespace qvk
