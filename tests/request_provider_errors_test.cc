// The request provider when a feature is off: each operation answers exactly
// once, with the error it owns, and announces it.
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

enum class Operation { allRequests, comments, addComment, ticketForms };

// A feature switched off in the settings: the operation answers its own
// error without sending anything. Service failures are in the fault matrix.
struct FeatureOffCase {
  const char* name;
  Operation operation;
  const char* settings;
  long code;
  std::vector<const char*> notifications;
};

void PrintTo(const FeatureOffCase& c, std::ostream* os) {
  *os << c.name;
}

class RequestProviderFeatureOffTest : public RequestProviderTest,
                                      public ::testing::WithParamInterface<FeatureOffCase> {
 protected:
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

TEST_P(RequestProviderFeatureOffTest, AnswersOnceAndSendsNothing) {
  const auto& c = GetParam();
  emulator_->control("PUT", "settings", c.settings);
  recorder_->clear();
  notifications_.clear();

  // The demo user's own request: creating one would fetch the settings
  // before the case changes them.
  const auto outcome = run(c.operation, "101");
  ASSERT_EQ(outcome.answers, 1u);
  ASSERT_TRUE(outcome.error);
  EXPECT_EQ(outcome.error->code, c.code) << outcome.error->debugDescription();
  // The comment-list notifications name no sender.
  const void* sender = c.operation == Operation::comments ? nullptr : provider_.get();
  EXPECT_THAT(notificationNames(sender), ElementsAreArray(c.notifications));
  // An error notification carries the error the callback received.
  if (!notifications_.empty()) {
    EXPECT_EQ(errorOf(notifications_.back()), outcome.error);
  }
  // The settings fetch may go out; the operation itself must not.
  EXPECT_THAT(recorder_->matching("/api/mobile/requests"), IsEmpty());
  EXPECT_THAT(recorder_->matching("/api/v2/ticket_forms"), IsEmpty());
}

constexpr const char* kConversationsOff = R"({"conversations":false})";

INSTANTIATE_TEST_SUITE_P(
    Features, RequestProviderFeatureOffTest,
    ::testing::Values(
        FeatureOffCase{"listConversationsOff",
                       Operation::allRequests,
                       kConversationsOff,
                       -7001,
                       {"QVKAPI_RequestsStarting", "QVKAPI_RequestsError"}},
        FeatureOffCase{"commentsConversationsOff",
                       Operation::comments,
                       kConversationsOff,
                       -7001,
                       {"QVKAPI_CommentListStarting", "QVKAPI_CommentListError"}},
        FeatureOffCase{"addCommentConversationsOff",
                       Operation::addComment,
                       kConversationsOff,
                       -7001,
                       {"QVKAPI_CommentSubmissionStarting", "QVKAPI_CommentSubmissionError"}},
        FeatureOffCase{
            "formsUnavailable", Operation::ticketForms, R"({"ticket_forms":false})", -7002, {}}),
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
