// Request records: JSON in, fields out, per record family; and writing back.
#include <functional>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/requests/qvk_comments_response.h"
#include "velmaro/requests/qvk_requests_response.h"
#include "velmaro/requests/qvk_upload_response.h"
#include "velmaro/util/qvk_date_util.h"

namespace velmaro {
namespace {

boost::json::object object(std::string_view json) {
  return boost::json::parse(json).as_object();
}

std::string wire(const std::optional<QVKRequest::TimePoint>& date) {
  return date ? QVKDateUtil::stringFromDate(*date) : "(none)";
}

template <class Record>
struct RecordCase {
  const char* label;
  const char* json;
  std::function<void(const Record&)> check;
};

template <class Record>
std::string caseName(const ::testing::TestParamInfo<RecordCase<Record>>& param) {
  return param.param.label;
}

using RequestCase = RecordCase<QVKRequest>;
class RequestParseTest : public ::testing::TestWithParam<RequestCase> {};

TEST_P(RequestParseTest, Fields) {
  GetParam().check(QVKRequest::initWithDict(object(GetParam().json)));
}

INSTANTIATE_TEST_SUITE_P(
    Dictionaries, RequestParseTest,
    ::testing::Values(
        RequestCase{"everyKey",
                    R"({"id": 42, "requester_id": 7, "status": "open", "subject": "s",
                        "description": "d", "type": "question",
                        "created_at": "2017-03-01T10:20:30Z", "updated_at": "2017-03-02T00:00:00Z",
                        "public_updated_at": "bad", "comment_count": 3,
                        "first_comment": {"id": 1, "body": "hi"}, "last_comment": {},
                        "collaborator_ids": [5, "x", 6], "last_commenting_agents_ids": null,
                        "custom_fields": [{"id": 9, "value": true}]})",
                    [](const QVKRequest& r) {
                      EXPECT_EQ(r.requestId, "42");
                      EXPECT_EQ(r.requesterId, 7);
                      EXPECT_EQ(r.status, "open");
                      EXPECT_EQ(r.requestDescription, "d");
                      EXPECT_EQ(wire(r.createdAt), "2017-03-01T10:20:30Z");
                      EXPECT_EQ(wire(r.updateAt), "2017-03-02T00:00:00Z");
                      EXPECT_EQ(wire(r.publicUpdatedAt), "(none)");
                      EXPECT_EQ(r.commentCount, 3);
                      ASSERT_TRUE(r.firstComment);
                      EXPECT_EQ(r.firstComment->body, "hi");
                      EXPECT_FALSE(r.lastComment);
                      EXPECT_EQ(r.collaboratingIds, (std::vector<std::int64_t>{5, 6}));
                      EXPECT_EQ(r.commentingAgentsIds, std::vector<std::int64_t>{});
                      ASSERT_EQ(r.customFields.size(), 1u);
                      EXPECT_EQ(r.customFields[0].value(), boost::json::value(true));
                    }},
        RequestCase{"stringIdAndNullComment", R"({"id": "abc", "first_comment": null})",
                    [](const QVKRequest& r) {
                      EXPECT_EQ(r.requestId, "abc");
                      EXPECT_FALSE(r.firstComment);
                      EXPECT_FALSE(r.collaboratingIds);
                      EXPECT_TRUE(r.customFields.empty());
                    }},
        RequestCase{"wrongTypesLeaveFieldsEmpty",
                    R"({"id": {}, "requester_id": "7", "status": 3, "created_at": 5,
                        "first_comment": [1], "collaborator_ids": "1,2", "custom_fields": 4,
                        "comment_count": 1e300})",
                    [](const QVKRequest& r) {
                      EXPECT_FALSE(r.requestId);
                      EXPECT_FALSE(r.requesterId);
                      EXPECT_FALSE(r.status);
                      EXPECT_FALSE(r.createdAt);
                      EXPECT_FALSE(r.firstComment);
                      EXPECT_FALSE(r.collaboratingIds);
                      EXPECT_TRUE(r.customFields.empty());
                      EXPECT_EQ(r.commentCount, std::numeric_limits<std::int64_t>::max());
                    }}),
    caseName<QVKRequest>);

using CommentCase = RecordCase<std::optional<QVKComment>>;
class CommentParseTest : public ::testing::TestWithParam<CommentCase> {};

TEST_P(CommentParseTest, Fields) {
  const auto json = boost::json::parse(GetParam().json);
  GetParam().check(QVKComment::initWithDictionary(&json));
}

INSTANTIATE_TEST_SUITE_P(
    Dictionaries, CommentParseTest,
    ::testing::Values(
        CommentCase{"emptyObjectIsNoComment", "{}", [](auto& c) { EXPECT_FALSE(c); }},
        CommentCase{"nullIsNoComment", "null", [](auto& c) { EXPECT_FALSE(c); }},
        CommentCase{"htmlSanitizedAndNumericRequestId",
                    R"({"html_body": "<p>a<br>b</p>", "request_id": 12, "author_id": 3})",
                    [](auto& c) {
                      ASSERT_TRUE(c);
                      EXPECT_EQ(c->htmlBody, "<p>a<br></br>b</p>");
                      EXPECT_EQ(c->requestId, "12");
                      EXPECT_EQ(c->authorId, 3);
                      EXPECT_FALSE(c->attachments);
                    }},
        CommentCase{"emptyAttachmentArrayIsNoList", R"({"id": 1, "attachments": []})",
                    [](auto& c) { EXPECT_FALSE(c->attachments); }},
        CommentCase{"attachmentsSkipEmptyElements",
                    R"({"id": 1, "attachments": [{}, 3, {"id": 8, "file_name": "a.png",
                        "width": 0.1, "thumbnails": [{"id": 9}]}]})",
                    [](auto& c) {
                      ASSERT_TRUE(c->attachments);
                      ASSERT_EQ(c->attachments->size(), 1u);
                      const auto& a = c->attachments->front();
                      EXPECT_EQ(a.filename, "a.png");
                      // Read in single precision, as the service's sizes are.
                      EXPECT_EQ(a.imageDimension.width, static_cast<double>(0.1f));
                      EXPECT_EQ(a.imageDimension.height, 0);
                      ASSERT_TRUE(a.thumbnails);
                      EXPECT_EQ(a.thumbnails->front().attachmentId, 9);
                    }}),
    caseName<std::optional<QVKComment>>);

TEST(AttachmentParse, ThumbnailsNestStopAtTheDepthLimit) {
  boost::json::object json{{"id", 0}};
  for (int i = 1; i <= 40; ++i) json = boost::json::object{{"id", i}, {"thumbnails", {json}}};
  auto attachment = QVKAttachment::initWithDict(json);
  int depth = 0;
  for (const QVKAttachment* a = &attachment; a->thumbnails; a = &a->thumbnails->front()) ++depth;
  EXPECT_EQ(depth, QVKAttachment::kMaxThumbnailDepth);
}

TEST(RequestParse, CustomFieldValuesOutliveTheParseArena) {
  std::vector<QVKRequest> copies;
  {
    unsigned char block[256];
    boost::json::monotonic_resource arena(block, sizeof block);
    const auto json = boost::json::parse(
        R"({"requests": [{"id": 7, "custom_fields": [{"id": 1, "value": ["a", "b"]},
            {"id": 2, "value": "a text long enough to leave the small buffer"}]}]})",
        &arena);
    copies = QVKRequestsResponse::parseRequestListWithDictionary(json.as_object()).value();
  }
  const auto copy = copies;  // copying reads the values' storage
  ASSERT_EQ(copy.at(0).customFields.size(), 2u);
  EXPECT_EQ(copy[0].customFields[0].value(), boost::json::parse(R"(["a", "b"])"));
  EXPECT_EQ(copy[0].customFields[1].value(),
            boost::json::value("a text long enough to leave the small buffer"));
}

TEST(RequestListParse, RequestsMustBeAnArray) {
  EXPECT_FALSE(QVKRequestsResponse::parseRequestListWithDictionary(object(R"({"requests": {}})")));
  EXPECT_FALSE(QVKRequestsResponse::parseRequestListWithDictionary(object("{}")));
  auto list = QVKRequestsResponse::parseRequestListWithDictionary(
      object(R"({"requests": [{"id": 2}, {"id": 1}]})"));
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2u);
  EXPECT_EQ((*list)[0].requestId, "2");
}

TEST(RequestListParse, CommentingAgentsAreAlwaysAgents) {
  auto agents = QVKRequestsResponse::parseRequestListAgentsWithDictionary(object(
      R"({"last_commenting_agents": [{"id": 1, "agent": false, "photo": null},
                                     {"id": 2, "photo": {"content_url": "https://a/p.png"}}]})"));
  ASSERT_TRUE(agents);
  ASSERT_EQ(agents->size(), 2u);
  EXPECT_TRUE((*agents)[0].isAgent && (*agents)[1].isAgent);
  EXPECT_FALSE((*agents)[0].avatarURL);
  EXPECT_EQ((*agents)[1].avatarURL, "https://a/p.png");
}

TEST(CommentsResponse, PairsEachCommentWithItsAuthorInServerOrder) {
  auto comments = QVKCommentsResponse::parseData(
      object(R"({"users": [{"id": 1, "name": "Ann"}, {}, {"id": 2, "name": "Bo"}],
                 "comments": [{"id": 10, "author_id": 2}, {}, {"id": 11, "author_id": 3},
                              {"id": 12, "author_id": 1}]})"));
  ASSERT_EQ(comments.size(), 3u);
  EXPECT_EQ(comments[0].user()->name, "Bo");
  EXPECT_EQ(comments[1].comment().commentId, 11);
  EXPECT_FALSE(comments[1].user());
  EXPECT_EQ(comments[2].user()->name, "Ann");
  EXPECT_TRUE(QVKCommentsResponse::parseData(object(R"({"comments": "x"})")).empty());
}

TEST(RequestToJson, WritesTheWireKeysAndReadsBackTheSameValues) {
  const auto json = object(
      R"({"id": "42", "requester_id": 7, "status": "new", "subject": "s", "description": "d",
          "type": "task", "collaborator_ids": [1], "last_commenting_agents_ids": [2],
          "created_at": "2017-03-01T10:20:30Z", "updated_at": "2017-03-01T10:20:31Z",
          "public_updated_at": "2017-03-01T10:20:32Z", "comment_count": 2,
          "first_comment": {"id": 3, "body": "b", "html_body": "<p>x</p>", "author_id": 7,
                            "created_at": "2017-03-01T10:20:30Z", "request_id": "42"},
          "custom_fields": [{"id": 5, "value": null}]})");
  const auto written = QVKRequest::initWithDict(json).toJson();
  EXPECT_EQ(boost::json::serialize(written), boost::json::serialize(json));
  EXPECT_EQ(QVKRequest::initWithDict(boost::json::object{}).toJson(),
            object(R"({"custom_fields": []})"));
}

TEST(SupportUserToJson, WritesThePhotoAsADictionary) {
  auto user = QVKSupportUser::initWithDictionary(
      object(R"({"id": 4, "name": "n", "agent": true, "tags": ["a"], "user_fields": {"k": 1},
                 "photo": {"content_url": "u", "id": 99}})"));
  EXPECT_EQ(user.toJson(), object(R"({"id": 4, "name": "n", "agent": true, "tags": ["a"],
                                      "user_fields": {"k": 1}, "photo": {"content_url": "u"}})"));
}

TEST(UploadResponse, ReadsTokenAndAttachmentUnderUpload) {
  auto response = QVKUploadResponse::initWithDict(
      object(R"({"upload": {"token": "tok", "attachment": {"id": 5, "size": 10}}})"));
  EXPECT_EQ(response.uploadToken, "tok");
  ASSERT_TRUE(response.attachment);
  EXPECT_EQ(response.attachment->size, 10);
  auto empty = QVKUploadResponse::initWithDict(object(R"({"token": "tok"})"));
  EXPECT_FALSE(empty.uploadToken || empty.attachment);
}

TEST(RecordDescriptions, BeginWithTheRecordName) {
  auto request = QVKRequest::initWithDict(object(R"({"id": 1, "subject": "Printer"})"));
  EXPECT_EQ(request.description().rfind("QVKRequest:\nrequestId [1]\n", 0), 0u);
  EXPECT_NE(request.description().find("subject [Printer]\n"), std::string::npos);
  EXPECT_EQ(
      QVKComment::initWithDictionary(object(R"({"id": 1})"))->description().rfind("Comment:\n", 0),
      0u);
  EXPECT_EQ(QVKSupportUser{}.description().rfind("User:\n", 0), 0u);
  EXPECT_EQ(QVKAttachment{}.description().rfind("Attachment:\n", 0), 0u);
}

}  // namespace
}  // namespace velmaro
