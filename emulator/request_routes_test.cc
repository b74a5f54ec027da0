#include <string>

#include <gtest/gtest.h>

#include "emulator/emulator_test_support.h"
#include "emulator/sample_data.h"

namespace qvk::emulator::testing {
namespace {

using testing::PrintTo;

const std::string kAllStatuses = "new,open,pending,hold,solved,closed";
const std::string kListQuery =
    "include=public_updated_at,last_commenting_agents,last_comment,first_comment&status=" +
    kAllStatuses + "&sort_by=updated_at&sort_order=desc";
const std::string kComments =
    "/api/mobile/requests/101/comments.json?sort_by=updated_at&sort_order=desc";

std::string createBody(const std::string& description, const std::string& extra = {}) {
  return R"({"request":{"subject":"Printer on fire","comment":{"body":")" + description +
         R"("}, "tags":["mobile"])" + extra + "}}";
}

std::string replyBody(const std::string& value, const std::string& uploadToken = {}) {
  std::string uploads = uploadToken.empty() ? "" : R"(,"uploads":[")" + uploadToken + R"("])";
  return R"({"request":{"comment":{"value":")" + value + "\"" + uploads + "}}}";
}

// A call the service refuses: without a token (401) or with the demo user's
// token and something wrong in it; and agent replies the control refuses.
struct RefusalCase {
  const char* name;
  const char* method;
  std::string path;
  std::string body;
  int status;
};

class RequestRefusals : public EmulatorTest, public ::testing::WithParamInterface<RefusalCase> {};

TEST_P(RequestRefusals, AnswerAnError) {
  const auto& c = GetParam();
  auto a = call(c.method, c.path, c.body, c.status == 401 ? "not-a-token" : demoToken());
  EXPECT_EQ(a.status, c.status) << a.body;
  EXPECT_TRUE(at(a.json, "/error").is_string()) << a.body;
  if (c.status == 401) {
    EXPECT_EQ(at(a.json, "/error"), "Unauthorized");
  }
}

const std::string kCreate = "/api/mobile/requests.json?include=last_comment";

INSTANTIATE_TEST_SUITE_P(
    Calls, RequestRefusals,
    ::testing::Values(
        RefusalCase{"create_without_token", "POST", kCreate, createBody("x"), 401},
        RefusalCase{"list_without_token", "GET", "/api/mobile/requests.json?" + kListQuery, "",
                    401},
        RefusalCase{"show_many_without_token", "GET",
                    "/api/mobile/requests/show_many.json?tokens=101", "", 401},
        RefusalCase{"show_without_token", "GET", "/api/mobile/requests/101.json", "", 401},
        RefusalCase{"comments_without_token", "GET", "/api/mobile/requests/101/comments.json", "",
                    401},
        RefusalCase{"reply_without_token", "PUT", "/api/mobile/requests/101.json", replyBody("x"),
                    401},
        RefusalCase{"upload_without_token", "POST", "/api/mobile/uploads.json?filename=a.txt", "x",
                    401},
        RefusalCase{"forms_without_token", "GET", "/api/v2/ticket_forms/show_many.json?ids=1", "",
                    401},
        RefusalCase{"create_not_json", "POST", kCreate, "{", 400},
        RefusalCase{"create_without_request", "POST", kCreate, R"({"subject":"x"})", 422},
        RefusalCase{"create_empty_description", "POST", kCreate, createBody(""), 422},
        RefusalCase{"create_unknown_upload", "POST", kCreate,
                    R"({"request":{"comment":{"body":"x","uploads":["nope"]}}})", 422},
        RefusalCase{"create_unknown_form", "POST", kCreate,
                    createBody("x", R"(,"ticket_form_id":7)"), 422},
        RefusalCase{"create_bad_custom_field", "POST", kCreate,
                    createBody("x", R"(,"custom_fields":[{"value":1}])"), 422},
        RefusalCase{"create_tags_not_strings", "POST", kCreate,
                    R"({"request":{"comment":{"body":"x"},"tags":[1]}})", 422},
        RefusalCase{"show_many_without_tokens", "GET",
                    "/api/mobile/requests/show_many.json?status=open", "", 400},
        RefusalCase{"show_unknown_request", "GET", "/api/mobile/requests/999.json", "", 404},
        RefusalCase{"reply_with_body_not_value", "PUT", "/api/mobile/requests/102.json",
                    R"({"request":{"comment":{"body":"x"}}})", 422},
        RefusalCase{"reply_unknown_request", "PUT", "/api/mobile/requests/999.json", replyBody("x"),
                    404},
        RefusalCase{"agent_reply_unknown_status", "POST", "/_emulator/requests/101/comments",
                    R"({"body":"x","status":"done"})", 422},
        RefusalCase{"agent_reply_by_end_user", "POST", "/_emulator/requests/101/comments",
                    R"({"body":"x","author_id":2001})", 422}),
    CaseName());

// The demo user's seeded requests: 101 open (4 comments, the last by an
// agent), 102 solved, 103 new.
class DemoUserReads : public EmulatorTest, public ::testing::WithParamInterface<RouteCase> {};

TEST_P(DemoUserReads, AnswerTheServicesShapes) {
  const auto& c = GetParam();
  auto a = get(c.path, demoToken());
  ASSERT_EQ(a.status, c.status) << a.body;
  expectChecks(a, c.checks);
}

INSTANTIATE_TEST_SUITE_P(
    Endpoints, DemoUserReads,
    ::testing::Values(
        RouteCase{"list, newest first, with agents",
                  "/api/mobile/requests.json?" + kListQuery,
                  200,
                  {sized("/requests", 3), is("/requests/0/id", 103), is("/requests/1/id", 101),
                   is("/requests/1/comment_count", 4),
                   is("/requests/1/first_comment/author_id", SampleData::kDemoUserId),
                   is("/requests/1/last_comment/author_id", SampleData::kFirstAgentId + 1),
                   sized("/requests/1/last_commenting_agents_ids", 2),
                   sized("/last_commenting_agents", 2), is("/last_commenting_agents/0/agent", true),
                   is("/count", 3), is("/next_page", nullptr)}},
        RouteCase{"list, oldest update first",
                  "/api/mobile/requests.json?status=" + kAllStatuses +
                      "&sort_by=updated_at&sort_order=asc",
                  200,
                  {sized("/requests", 3), is("/requests/0/id", 102), is("/requests/2/id", 103)}},
        RouteCase{"list, one status",
                  "/api/mobile/requests.json?status=solved",
                  200,
                  {sized("/requests", 1), is("/requests/0/status", "solved")}},
        RouteCase{"show_many by tokens and status",
                  "/api/mobile/requests/show_many.json?tokens=101,102,999&include=last_comment&"
                  "status=open&sort_by=updated_at&sort_order=desc",
                  200,
                  {sized("/requests", 1), is("/requests/0/id", 101),
                   is("/requests/0/last_comment/author_id", SampleData::kFirstAgentId + 1)}},
        RouteCase{
            "comments, newest first",
            kComments,
            200,
            {sized("/comments", 4), is("/comments/0/author_id", SampleData::kFirstAgentId + 1),
             sized("/users", 3), sized("/organizations", 0), is("/count", 4)}},
        RouteCase{"comments since",
                  kComments + "&since=2026-01-05T12:00:00Z",
                  200,
                  {sized("/comments", 2)}},
        RouteCase{"comments since, agents only",
                  kComments + "&since=2026-01-05T12:00:00Z&role=agent",
                  200,
                  {sized("/comments", 1), sized("/users", 1), is("/users/0/agent", true)}}),
    CaseName());

// Without include=last_comment neither write answers a last comment.
struct WriteCase {
  const char* name;
  const char* method;
  std::string path;
  std::string body;
  const char* commentPointer;
};

class WritesWithoutInclude : public EmulatorTest,
                             public ::testing::WithParamInterface<WriteCase> {};

TEST_P(WritesWithoutInclude, AnswerNoLastComment) {
  const auto& c = GetParam();
  auto a = call(c.method, c.path, c.body, demoToken());
  ASSERT_TRUE(at(a.json, "/request/id").is_int64()) << a.body;
  EXPECT_TRUE(at(a.json, c.commentPointer).is_null()) << a.body;
}

INSTANTIATE_TEST_SUITE_P(Writes, WritesWithoutInclude,
                         ::testing::Values(WriteCase{"create", "POST", "/api/mobile/requests.json",
                                                     createBody("Help"), "/last_comment"},
                                           WriteCase{"reply", "PUT",
                                                     "/api/mobile/requests/101.json",
                                                     replyBody("x"), "/request/last_comment"}),
                         CaseName());

// A read's entity tag holds until an agent's reply to request 101 changes it.
struct ConditionalCase {
  const char* name;
  std::string path;
  bool changedByReply;
};

class ConditionalReads : public EmulatorTest,
                         public ::testing::WithParamInterface<ConditionalCase> {};

TEST_P(ConditionalReads, AnswerNotModifiedUntilTheContentChanges) {
  const auto& c = GetParam();
  auto token = demoToken();
  const httplib::Headers tag{{"If-None-Match", get(c.path, token).header("ETag")}};
  EXPECT_EQ(get(c.path, token, tag).status, 304);
  ASSERT_EQ(post("/_emulator/requests/101/comments", R"({"body":"On it."})").status, 201);
  EXPECT_EQ(get(c.path, token, tag).status, c.changedByReply ? 200 : 304);
}

INSTANTIATE_TEST_SUITE_P(
    Reads, ConditionalReads,
    ::testing::Values(ConditionalCase{"list", "/api/mobile/requests.json?" + kListQuery, true},
                      ConditionalCase{"another_request", "/api/mobile/requests/102.json", false}),
    CaseName());

class Requests : public EmulatorTest {
 protected:
  std::string upload(const std::string& token, const std::string& name) {
    auto a = post("/api/mobile/uploads.json?filename=" + name, "DATA", token, {},
                  "application/octet-stream");
    EXPECT_EQ(a.status, 201) << a.body;
    const auto& t = at(a.json, "/upload/token");
    return t.is_string() ? std::string(t.as_string()) : std::string();
  }
};

TEST_F(Requests, CreateStoresEverythingAndAnswersTheLastCommentAtTheTop) {
  auto token = demoToken();
  auto uploadToken = upload(token, "shot.png");
  auto a = post("/api/mobile/requests.json?include=last_comment",
                R"({"request":{"subject":"Hi","comment":{"body":"Help","uploads":[")" +
                    uploadToken + R"("]},"tags":["a","b"],"ticket_form_id":)" +
                    std::to_string(SampleData::kContactFormId) +
                    R"(,"custom_fields":[{"id":360000050005,"value":"ABC-1234"}],)"
                    R"("metadata":{"sdk":{"device_os":"12"}}}})",
                token);
  ASSERT_EQ(a.status, 201) << a.body;
  // The create answer carries the comment at the top level only.
  expectChecks(
      a, {is("/request/status", "new"), is("/request/ticket_form_id", SampleData::kContactFormId),
          is("/request/custom_fields/0/value", "ABC-1234"), is("/last_comment/body", "Help"),
          is("/last_comment/attachments/0/file_name", "shot.png")});
  EXPECT_TRUE(at(a.json, "/request/last_comment").is_null());

  auto id = std::to_string(at(a.json, "/request/id").as_int64());
  expectChecks(get("/_emulator/requests/" + id),
               {is("/request/tags/1", "b"), is("/request/metadata/sdk/device_os", "12")});
  // A token is used once.
  EXPECT_EQ(
      post("/api/mobile/requests.json",
           R"({"request":{"comment":{"body":"x","uploads":[")" + uploadToken + R"("]}}})", token)
          .status,
      422);
}

TEST_F(Requests, AnonymousRequestsBelongToTheIdentityGuid) {
  auto token = anonymousToken("guid-1");
  auto created = post("/api/mobile/requests.json?include=last_comment", createBody("Anon"), token,
                      {{"Mobile-Sdk-Identity", "guid-1"}});
  ASSERT_EQ(created.status, 201) << created.body;
  auto id = std::to_string(at(created.json, "/request/id").as_int64());

  // show_many answers by token, whoever the request belongs to.
  auto many = get("/api/mobile/requests/show_many.json?tokens=" + id +
                      ",101&include=last_comment&status=" + kAllStatuses +
                      "&sort_by=updated_at&sort_order=desc",
                  token);
  ASSERT_EQ(many.status, 200);
  EXPECT_EQ(sizeOf(at(many.json, "/requests")), 2u);
  // A new token for the same guid is the same user.
  EXPECT_EQ(get("/api/mobile/requests/" + id + ".json", anonymousToken("guid-1")).status, 200);
  EXPECT_EQ(get("/api/mobile/requests/" + id + ".json", anonymousToken("guid-2")).status, 404);
  EXPECT_EQ(get("/api/mobile/requests/101.json", token).status, 404);
}

TEST_F(Requests, AgentCommentIsTheOneSinceItsTimeAndMakesTheRequestPending) {
  auto token = demoToken();
  auto reply = post("/_emulator/requests/101/comments", R"({"body":"Any news?"})");
  ASSERT_EQ(reply.status, 201) << reply.body;
  // The replying agent comes first among the last commenting agents.
  expectChecks(reply, {is("/request/comment_count", 5),
                       is("/request/updated_at", at(reply.json, "/comment/created_at")),
                       is("/request/last_commenting_agents_ids/0", SampleData::kFirstAgentId)});
  auto since = std::string(at(reply.json, "/comment/created_at").as_string());
  expectChecks(get(kComments + "&since=" + since + "&role=agent", token),
               {sized("/comments", 1), is("/comments/0/body", "Any news?")});
  EXPECT_EQ(at(get("/api/mobile/requests/101.json", token).json, "/request/status"), "pending");
}

TEST_F(Requests, ReplyAnswersTheRequestWithItsLastCommentInside) {
  auto token = demoToken();
  auto a = put("/api/mobile/requests/102.json?include=last_comment",
               replyBody("It is back again", upload(token, "log.txt")), token);
  ASSERT_EQ(a.status, 200) << a.body;
  expectChecks(a, {is("/request/last_comment/body", "It is back again"),
                   is("/request/last_comment/attachments/0/file_name", "log.txt"),
                   // A reply reopens a solved request.
                   is("/request/status", "open"), is("/request/comment_count", 3)});
}

TEST_F(Requests, ClosedRequestRefusesReplies) {
  ASSERT_EQ(post("/_emulator/requests/103/comments", R"({"body":"Done","status":"closed"})").status,
            201);
  EXPECT_EQ(put("/api/mobile/requests/103.json", replyBody("x"), demoToken()).status, 422);
}

}  // namespace
}  // namespace qvk::emulator::testing
