#include "velmaro/outbox/outbox_read_back.h"

#include <gtest/gtest.h>

namespace velmaro {
namespace {

using namespace std::chrono_literals;

const auto kKept = std::chrono::system_clock::time_point(std::chrono::hours(500'000));

// One comment on the service, against a reply kept at kKept: is it that reply?
struct CommentRow {
  const char* label;
  const char* body;
  bool byAgent;
  std::chrono::seconds madeAfterKept;
  bool matches;
};

class OutboxReadBackComment : public ::testing::TestWithParam<CommentRow> {};

TEST_P(OutboxReadBackComment, MatchesByTextAuthorAndTime) {
  const auto& row = GetParam();
  auto entry = OutboxEntry::reply("101", "It still fails", {});
  entry.queuedAt = kKept;
  QVKComment comment;
  comment.body = row.body;
  comment.authorId = 7;
  comment.createdAt = kKept + row.madeAfterKept;
  QVKSupportUser user;
  user.userId = 7;
  user.isAgent = row.byAgent;
  const auto found = OutboxReadBack::matchingComment({{comment, user}}, entry);
  EXPECT_EQ(found.has_value(), row.matches);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OutboxReadBackComment,
    ::testing::Values(CommentRow{"sameReply", "It still fails", false, 2s, true},
                      CommentRow{"serviceClockBehind", "It still fails", false, -240s, true},
                      CommentRow{"otherText", "It still fails!", false, 2s, false},
                      CommentRow{"agentSaidTheSame", "It still fails", true, 2s, false},
                      CommentRow{"anOlderIdenticalReply", "It still fails", false, -3600s, false}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(OutboxReadBackRequest, MatchesTheNewRequestBySubjectAndDescriptionOnly) {
  auto entry = OutboxEntry::newRequest("Sync", "Projects do not sync", "{}", {});
  entry.queuedAt = kKept;
  const auto request = [](const char* id, const char* subject, const char* description) {
    QVKRequest made;
    made.requestId = id;
    made.subject = subject;
    made.requestDescription = description;
    made.createdAt = kKept + 1s;
    return made;
  };
  const auto found = OutboxReadBack::matchingRequest(
      {request("1", "Other", "Projects do not sync"), request("2", "Sync", "Something else"),
       request("3", "Sync", "Projects do not sync")},
      entry);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->requestId, "3");
}

}  // namespace
}  // namespace velmaro
