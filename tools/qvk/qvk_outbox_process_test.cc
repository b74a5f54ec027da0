// The outbox across real qvk processes: calls kept while the service cannot
// be reached are sent later in order, and a call the service may already
// have (its answer lost, its sender killed) is never sent twice.
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include <arpa/inet.h>
#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "emulator/demo_identity.h"
#include "tools/qvk/qvk_emulator_test.h"

namespace qvk {
namespace {

using testing::InvocationResult;
using testing::QvkInvocation;
using velmaro::testing::closedLoopbackUrl;

const std::string kJwt(qvk::emulator::kDemoJwt);

class QvkOutbox : public testing::QvkEmulatorTest {
 protected:
  void SetUp() override {
    QvkEmulatorTest::SetUp();
    // Online once, so that the account's settings are kept for the offline runs.
    ASSERT_EQ(online({"requests", "list"}).status, 0);
  }

  std::vector<std::string> args(const std::string& url, std::vector<std::string> command) const {
    command.insert(command.begin(), {"--jwt", kJwt});
    return withService(command, url);
  }
  InvocationResult offline(std::vector<std::string> command) const {
    return QvkInvocation::run(QVK_BINARY, args(closedLoopbackUrl(), std::move(command)), "");
  }
  InvocationResult online(std::vector<std::string> command) const {
    return QvkInvocation::run(QVK_BINARY, args(emulator_->url(), std::move(command)), "");
  }

  // The bodies of a request's comments, oldest first.
  std::vector<std::string> commentBodies(const std::string& requestId) const {
    const auto listed = online({"--json", "requests", "comments", requestId});
    std::vector<std::string> bodies;
    if (listed.status != 0) return bodies;
    const auto document = boost::json::parse(listed.out);  // kept: the loop reads into it
    for (const auto& comment : document.at("comments").as_array())
      bodies.emplace(bodies.begin(), comment.at("body").as_string());
    return bodies;
  }
  std::size_t requestsDescribed(const std::string& description) const {
    const auto listed = online({"--json", "requests", "list"});
    std::size_t count = 0;
    const auto document = boost::json::parse(listed.out);  // kept: the loop reads into it
    for (const auto& request : document.at("requests").as_array()) {
      const auto* text = request.as_object().if_contains("description");
      count += text && text->is_string() && text->as_string() == description;
    }
    return count;
  }
  std::size_t waiting() const {
    const auto listed = online({"--json", "requests", "outbox"});
    return boost::json::parse(listed.out).at("outbox").as_array().size();
  }
};

std::size_t occurrences(const std::vector<std::string>& texts, const std::string& text) {
  return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), text));
}

TEST_F(QvkOutbox, RepliesKeptOfflineAreSentOnceInTheirOrder) {
  for (const char* text : {"first while offline", "second while offline"}) {
    const auto kept = offline({"requests", "comment", "101", text, "--queue-offline"});
    ASSERT_EQ(kept.status, 0) << kept.err;
    EXPECT_EQ(kept.out.rfind("queued ", 0), 0u) << kept.out;
  }
  EXPECT_EQ(waiting(), 2u);

  const auto sent = online({"requests", "outbox", "--send"});
  EXPECT_EQ(sent.status, 0) << sent.err;
  EXPECT_NE(sent.err.find("outbox: sent 2"), std::string::npos) << sent.err;
  const auto again = online({"requests", "outbox", "--send"});
  EXPECT_EQ(again.status, 0) << again.err;

  const auto bodies = commentBodies("101");
  ASSERT_GE(bodies.size(), 2u);
  EXPECT_EQ(bodies[bodies.size() - 2], "first while offline");
  EXPECT_EQ(bodies.back(), "second while offline");
  EXPECT_EQ(occurrences(bodies, "first while offline"), 1u);
  EXPECT_EQ(waiting(), 0u);
}

TEST_F(QvkOutbox, AFileKeptOfflineIsUploadedBeforeTheReplyThatNamesIt) {
  const auto file = dataDir_ + "/trace.log";
  std::ofstream(file) << "trace of the failure\n";
  const auto kept =
      offline({"requests", "comment", "102", "see the trace", "--attach", file, "--queue-offline"});
  ASSERT_EQ(kept.status, 0) << kept.err;

  const auto sent = online({"requests", "outbox", "--send"});
  EXPECT_NE(sent.err.find("outbox: sent 1"), std::string::npos) << sent.err;
  const auto listed = online({"--json", "requests", "comments", "102"});
  const auto document = boost::json::parse(listed.out);
  const auto& newest = document.at("comments").as_array().at(0);
  EXPECT_EQ(newest.at("body").as_string(), "see the trace");
  ASSERT_EQ(newest.at("attachments").as_array().size(), 1u) << listed.out;
  EXPECT_EQ(newest.at("attachments").as_array().at(0).at("file_name").as_string(), "trace.log");
  EXPECT_TRUE(std::filesystem::is_empty(dataDir_ + "/outbox-files"));
}

TEST_F(QvkOutbox, WithoutTheFlagAnUnreachableServiceIsAnErrorAndNothingIsKept) {
  const auto failed = offline({"requests", "comment", "101", "not kept"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_EQ(waiting(), 0u);
}

// The service stores the call, then the connection closes before its answer:
// the call is kept as unsure, and the next run finds it instead of sending it
// again.
struct LostAnswer {
  const char* label;
  const char* pathPrefix;
  std::vector<std::string> command;
  const char* text;

  friend void PrintTo(const LostAnswer& row, std::ostream* out) { *out << row.label; }
};

class QvkOutboxLostAnswer : public QvkOutbox, public ::testing::WithParamInterface<LostAnswer> {};

TEST_P(QvkOutboxLostAnswer, IsFoundByTheNextRunAndNotSentAgain) {
  const auto& row = GetParam();
  fault(std::string(R"({"drop_after":true,"path_prefix":")") + row.pathPrefix + "\"}");
  auto command = row.command;
  command.emplace_back("--queue-offline");
  const auto kept = online(command);
  ASSERT_EQ(kept.status, 0) << kept.err;
  EXPECT_EQ(kept.out.rfind("queued ", 0), 0u) << kept.out;

  const auto next = online({"requests", "outbox", "--send"});
  EXPECT_NE(next.err.find("found already sent 1"), std::string::npos) << next.err;
  EXPECT_EQ(waiting(), 0u);
  if (row.command[1] == "create") {
    EXPECT_EQ(requestsDescribed(row.text), 1u);
  } else {
    EXPECT_EQ(occurrences(commentBodies("102"), row.text), 1u);
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, QvkOutboxLostAnswer,
                         ::testing::Values(LostAnswer{"newRequest",
                                                      "/api/mobile/requests.json",
                                                      {"requests", "create", "--subject", "Lost",
                                                       "--description", "stored, answer lost"},
                                                      "stored, answer lost"},
                                           LostAnswer{
                                               "reply",
                                               "/api/mobile/requests/102.json",
                                               {"requests", "comment", "102", "reply, answer lost"},
                                               "reply, answer lost"}),
                         [](const auto& param) { return std::string(param.param.label); });

TEST_F(QvkOutbox, ASenderKilledMidCallLeavesTheCallForTheNextRunToFind) {
  const auto kept =
      offline({"requests", "comment", "103", "sent by a killed run", "--queue-offline"});
  ASSERT_EQ(kept.status, 0) << kept.err;
  // The service stores the reply after the delay, whatever became of its sender.
  fault(R"({"delay_ms":1500,"path_prefix":"/api/mobile/requests/103.json"})");
  QvkInvocation killed(QVK_BINARY, args(emulator_->url(), {"requests", "outbox", "--send"}));
  waitUntilFaultsAreUsed();
  ASSERT_TRUE(killed.signal(SIGKILL));
  killed.finish(std::chrono::seconds(10));
  for (int poll = 0; poll < 100 && occurrences(commentBodies("103"), "sent by a killed run") == 0;
       ++poll)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));

  const auto next = online({"requests", "outbox", "--send"});
  EXPECT_NE(next.err.find("found already sent 1"), std::string::npos) << next.err;
  EXPECT_EQ(occurrences(commentBodies("103"), "sent by a killed run"), 1u);
}

}  // namespace
}  // namespace qvk
