// The request provider when the service fails or a feature is off: each
// operation answers exactly once, with the error it owns, and announces it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/request_provider_fixture.h"
#include "velmaro/util/qvk_date_util.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// One answer, reduced to what the cases compare.
struct Outcome {
  std::size_t answers = 0;
  bool result = false;
  std::optional<quorvel::platform::Error> error;
};

enum class Operation { allRequests, requestById, comments, addComment, ticketForms };

struct FailureCase {
  const char* name;
  Operation operation;
  // The emulator's fault ({"status":500}, {"drop":true}, ...) on the
  // operation's path, or the settings to switch a feature off; either empty.
  const char* fault;
  const char* settings;
  // 0 when the answer is a result.
  long code;
  std::vector<const char*> notifications;
  // Whether anything may reach the service.
  bool sends = true;
};

void PrintTo(const FailureCase& c, std::ostream* os) {
  *os << c.name;
}

// Faults come from the emulator itself: a relay in between would turn a
// dropped connection into a 502.
class RequestProviderFailureTest : public RequestProviderTest,
                                   public ::testing::WithParamInterface<FailureCase> {
 protected:
  std::string serviceUrl() const override { return emulator_->url(); }

  template <class Result, class Start>
  Outcome run(Start start) {
    auto answers = call<Result>(start);
    settle();
    Outcome outcome;
    outcome.answers = answers->size();
    if (!answers->list.empty()) {
      outcome.result = (*answers)[0].result.has_value();
      outcome.error = (*answers)[0].error;
    }
    return outcome;
  }

  Outcome run(Operation operation, const std::string& id) {
    switch (operation) {
      case Operation::allRequests:
        return run<QVKRequestsWithCommentingAgents>(
            [&](auto cb) { provider_->getAllRequests(std::move(cb)); });
      case Operation::requestById:
        return run<QVKRequest>([&](auto cb) { provider_->getRequestById(id, std::move(cb)); });
      case Operation::comments:
        return run<std::vector<QVKCommentWithUser>>(
            [&](auto cb) { provider_->getCommentsWithRequestId(id, std::move(cb)); });
      case Operation::addComment:
        return run<QVKComment>(
            [&](auto cb) { provider_->addComment(std::string("Hello?"), id, std::move(cb)); });
      case Operation::ticketForms:
        return run<QVKRequestProvider::TicketForms>(
            [&](auto cb) { provider_->getTicketFormWithIds({360000040001}, std::move(cb)); });
    }
    return {};
  }
};

TEST_P(RequestProviderFailureTest, AnswersOnceAndAnnounces) {
  const auto& c = GetParam();
  // The demo user's own request: creating one would fetch the settings
  // before the case changes them.
  const std::string id = "101";
  if (*c.settings) emulator_->control("PUT", "settings", c.settings);
  if (*c.fault) {
    const std::string prefix =
        c.operation == Operation::ticketForms ? "/api/v2/ticket_forms" : "/api/mobile/requests";
    const std::string body =
        R"({"count":1,"path_prefix":")" + prefix + R"(",)" + std::string(c.fault + 1);
    ASSERT_EQ(emulator_->control("POST", "faults", body).status / 100, 2);
  }
  recorder_->clear();
  notifications_.clear();

  const auto outcome = run(c.operation, id);
  ASSERT_EQ(outcome.answers, 1u);
  if (c.code == 0) {
    EXPECT_TRUE(outcome.result);
    EXPECT_FALSE(outcome.error) << outcome.error->debugDescription();
  } else {
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->code, c.code) << outcome.error->debugDescription();
  }
  // The comment-list notifications name no sender.
  const void* sender = c.operation == Operation::comments ? nullptr : provider_.get();
  EXPECT_THAT(notificationNames(sender), ElementsAreArray(c.notifications));
  // An error notification carries the error the callback received.
  if (!notifications_.empty() && notifications_.back().name.ends_with("Error")) {
    EXPECT_EQ(errorOf(notifications_.back()), outcome.error);
  }
  if (!c.sends) {
    EXPECT_THAT(recorder_->matching("/api/"), IsEmpty());
  }
}

constexpr long kParseError = 3840;
constexpr long kDropped = -1005;
constexpr const char* kConversationsOff = R"({"conversations":false})";

INSTANTIATE_TEST_SUITE_P(
    Failures, RequestProviderFailureTest,
    ::testing::Values(
        FailureCase{"listStatus500",
                    Operation::allRequests,
                    R"({"status":500})",
                    "",
                    500,
                    {"QVKAPI_RequestsStarting", "QVKAPI_RequestsError"}},
        FailureCase{"listDropped",
                    Operation::allRequests,
                    R"({"drop":true})",
                    "",
                    kDropped,
                    {"QVKAPI_RequestsStarting", "QVKAPI_RequestsError"}},
        // A body that does not parse is the callback's error but still counts
        // as the list's success.
        FailureCase{"listMalformed",
                    Operation::allRequests,
                    R"({"malformed":true})",
                    "",
                    kParseError,
                    {"QVKAPI_RequestsStarting", "QVKAPI_RequestsSuccess"}},
        FailureCase{"listConversationsOff",
                    Operation::allRequests,
                    "",
                    kConversationsOff,
                    -7001,
                    {"QVKAPI_RequestsStarting", "QVKAPI_RequestsError"},
                    false},
        FailureCase{"byIdUnauthorized",
                    Operation::requestById,
                    R"({"status":401})",
                    "",
                    401,
                    {"QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdError"}},
        FailureCase{"byIdMalformed",
                    Operation::requestById,
                    R"({"malformed":true})",
                    "",
                    kParseError,
                    {"QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdSuccess"}},
        FailureCase{"commentsDropped",
                    Operation::comments,
                    R"({"drop":true})",
                    "",
                    kDropped,
                    {"QVKAPI_CommentListStarting", "QVKAPI_CommentListError"}},
        // Unlike the lists, a comment list that does not parse is not a success.
        FailureCase{"commentsMalformed",
                    Operation::comments,
                    R"({"malformed":true})",
                    "",
                    kParseError,
                    {"QVKAPI_CommentListStarting"}},
        FailureCase{"commentsConversationsOff",
                    Operation::comments,
                    "",
                    kConversationsOff,
                    -7001,
                    {"QVKAPI_CommentListStarting", "QVKAPI_CommentListError"},
                    false},
        FailureCase{"addCommentStatus500",
                    Operation::addComment,
                    R"({"status":500})",
                    "",
                    500,
                    {"QVKAPI_CommentSubmissionStarting", "QVKAPI_CommentSubmissionError"}},
        FailureCase{"addCommentMalformed",
                    Operation::addComment,
                    R"({"malformed":true})",
                    "",
                    kParseError,
                    {"QVKAPI_CommentSubmissionStarting"}},
        FailureCase{"addCommentConversationsOff",
                    Operation::addComment,
                    "",
                    kConversationsOff,
                    -7001,
                    {"QVKAPI_CommentSubmissionStarting", "QVKAPI_CommentSubmissionError"},
                    false},
        // Ticket forms post nothing, and a body that does not parse gives no
        // forms rather than an error.
        FailureCase{"formsStatus500", Operation::ticketForms, R"({"status":500})", "", 500, {}},
        FailureCase{"formsMalformed", Operation::ticketForms, R"({"malformed":true})", "", 0, {}},
        FailureCase{"formsUnavailable",
                    Operation::ticketForms,
                    "",
                    R"({"ticket_forms":false})",
                    -7002,
                    {},
                    false}),
    [](const auto& param) { return std::string(param.param.name); });

// The since-date form asks for agents' comments after the date, role last;
// the demo user's request 101 has two agent replies after 11:00.
TEST_F(RequestProviderTest, AgentCommentsSinceADate) {
  auto answers = call<std::vector<QVKCommentWithUser>>([&](auto cb) {
    provider_->getCommentsWithRequestId(std::string("101"),
                                        QVKDateUtil::dateForJsonString("2026-01-05T11:00:00Z"),
                                        true, std::move(cb));
  });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  EXPECT_EQ(lastTarget("/comments"),
            "/api/mobile/requests/101/comments.json?sort_by=updated_at&sort_order=desc&since="
            "2026-01-05T11:00:00Z&role=agent");
  ASSERT_EQ((*answers)[0].result->size(), 2u);
  for (const auto& comment : *(*answers)[0].result) {
    ASSERT_TRUE(comment.user());
    EXPECT_TRUE(comment.user()->isAgent);
  }
}

}  // namespace
}  // namespace velmaro::testing
