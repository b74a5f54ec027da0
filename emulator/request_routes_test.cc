#include <string>

#include <gtest/gtest.h>

#include "emulator/emulator_test_support.h"
#include "emulator/sample_data.h"

namespace qvk::emulator::testing {
namespace {

namespace json = boost::json;

const std::string kAllStatuses = "new,open,pending,hold,solved,closed";
const std::string kListQuery =
    "include=public_updated_at,last_commenting_agents,last_comment,first_comment&status=" +
    kAllStatuses + "&sort_by=updated_at&sort_order=desc";

std::string createBody(const std::string& description, const std::string& extra = {}) {
  return R"({"request":{"subject":"Printer on fire","comment":{"body":")" + description +
         R"("}, "tags":["mobile"])" + extra + "}}";
}

struct AuthCase {
  const char* name;
  const char* method;
  std::string path;
};

class RequestsNeedAToken : public EmulatorTest, public ::testing::WithParamInterface<AuthCase> {};

TEST_P(RequestsNeedAToken, AnswersUnauthorizedWithoutOne) {
  const auto& c = GetParam();
  Answer a;
  std::string m = c.method;
  if (m == "GET") a = get(c.path, "not-a-token");
  if (m == "POST") a = post(c.path, createBody("x"), "not-a-token");
  if (m == "PUT") a = put(c.path, R"({"request":{"comment":{"value":"x"}}})", "not-a-token");
  if (m == "DELETE") a = del(c.path);
  EXPECT_EQ(a.status, 401) << a.body;
  EXPECT_EQ(at(a.json, "error"), "Unauthorized");
}

INSTANTIATE_TEST_SUITE_P(
    Endpoints, RequestsNeedAToken,
    ::testing::Values(
        AuthCase{"create", "POST", "/api/mobile/requests.json?include=last_comment"},
        AuthCase{"list", "GET", "/api/mobile/requests.json?" + kListQuery},
        AuthCase{"show_many", "GET", "/api/mobile/requests/show_many.json?tokens=101"},
        AuthCase{"show", "GET", "/api/mobile/requests/101.json"},
        AuthCase{"comments", "GET", "/api/mobile/requests/101/comments.json"},
        AuthCase{"reply", "PUT", "/api/mobile/requests/101.json?include=last_comment"},
        AuthCase{"upload", "POST", "/api/mobile/uploads.json?filename=a.txt"},
        AuthCase{"forms", "GET", "/api/v2/ticket_forms/show_many.json?ids=1"}),
    CaseName());

struct InvalidCase {
  const char* name;
  std::string body;
  int status;
};

class InvalidCreate : public EmulatorTest, public ::testing::WithParamInterface<InvalidCase> {};

TEST_P(InvalidCreate, IsRefused) {
  auto a = post("/api/mobile/requests.json?include=last_comment", GetParam().body, demoToken());
  EXPECT_EQ(a.status, GetParam().status) << a.body;
  EXPECT_TRUE(a.has("error")) << a.body;
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, InvalidCreate,
    ::testing::Values(InvalidCase{"not_json", "{", 400},
                      InvalidCase{"no_request", R"({"subject":"x"})", 422},
                      InvalidCase{"empty_description", createBody(""), 422},
                      InvalidCase{"unknown_upload",
                                  R"({"request":{"comment":{"body":"x",)"
                                  R"("uploads":["nope"]}}})",
                                  422},
                      InvalidCase{"unknown_form", createBody("x", R"(,"ticket_form_id":7)"), 422},
                      InvalidCase{"bad_custom_field",
                                  createBody("x", R"(,"custom_fields":[{"value":1}])"), 422},
                      InvalidCase{"tags_not_strings",
                                  R"({"request":{"comment":{"body":"x"},)"
                                  R"("tags":[1]}})",
                                  422}),
    CaseName());

using Requests = EmulatorTest;

TEST_F(Requests, DemoUserListsTheirRequestsWithAgents) {
  auto a = get("/api/mobile/requests.json?" + kListQuery, demoToken());
  ASSERT_EQ(a.status, 200) << a.body;
  ASSERT_EQ(sizeOf(at(a.json, "requests")), 3u);
  // Most recently updated first.
  EXPECT_EQ(at(a.json, "requests", 0, "id"), 103);
  EXPECT_EQ(at(a.json, "requests", 1, "id"), 101);
  const auto& open = at(a.json, "requests", 1);
  EXPECT_EQ(at(open, "comment_count"), 4);
  EXPECT_EQ(at(open, "first_comment", "author_id"), SampleData::kDemoUserId);
  EXPECT_EQ(at(open, "last_comment", "author_id"), SampleData::kFirstAgentId + 1);
  EXPECT_EQ(sizeOf(at(open, "last_commenting_agents_ids")), 2u);
  EXPECT_EQ(sizeOf(at(a.json, "last_commenting_agents")), 2u);
  EXPECT_EQ(at(a.json, "last_commenting_agents", 0, "agent"), true);

  auto solvedOnly = get("/api/mobile/requests.json?status=solved", demoToken());
  ASSERT_EQ(sizeOf(at(solvedOnly.json, "requests")), 1u);
  EXPECT_EQ(at(solvedOnly.json, "requests", 0, "status"), "solved");
}

TEST_F(Requests, CreateStoresEverythingAndAnswersTheLastComment) {
  auto token = demoToken();
  auto upload =
      post("/api/mobile/uploads.json?filename=shot.png", "PNGDATA", token, {}, "image/png");
  ASSERT_EQ(upload.status, 201);
  std::string uploadToken(at(upload.json, "upload", "token").as_string());
  auto a = post("/api/mobile/requests.json?include=last_comment",
                R"({"request":{"subject":"Hi","comment":{"body":"Help","uploads":[")" +
                    uploadToken + R"("]},"tags":["a","b"],"ticket_form_id":)" +
                    std::to_string(SampleData::kContactFormId) +
                    R"(,"custom_fields":[{"id":360000050005,"value":"ABC-1234"}],)"
                    R"("metadata":{"sdk":{"device_os":"12"}}}})",
                token);
  ASSERT_EQ(a.status, 201) << a.body;
  EXPECT_EQ(at(a.json, "request", "status"), "new");
  EXPECT_EQ(at(a.json, "request", "ticket_form_id"), SampleData::kContactFormId);
  EXPECT_EQ(at(a.json, "request", "custom_fields", 0, "value"), "ABC-1234");
  EXPECT_EQ(at(a.json, "last_comment", "body"), "Help");
  EXPECT_EQ(at(a.json, "last_comment", "attachments", 0, "file_name"), "shot.png");
  // The create answer carries the comment at the top level only.
  EXPECT_TRUE(at(a.json, "request", "last_comment").is_null());

  auto id = std::to_string(at(a.json, "request", "id").as_int64());
  auto stored = get("/_emulator/requests/" + id);
  EXPECT_EQ(at(stored.json, "request", "tags", 1), "b");
  EXPECT_EQ(at(stored.json, "request", "metadata", "sdk", "device_os"), "12");
  // A token is used once.
  auto reuse =
      post("/api/mobile/requests.json",
           R"({"request":{"comment":{"body":"x","uploads":[")" + uploadToken + R"("]}}})", token);
  EXPECT_EQ(reuse.status, 422);
}

TEST_F(Requests, AnonymousRequestsBelongToTheIdentityGuid) {
  auto token = anonymousToken("guid-1");
  auto created = post("/api/mobile/requests.json?include=last_comment", createBody("Anon"), token,
                      {{"Mobile-Sdk-Identity", "guid-1"}});
  ASSERT_EQ(created.status, 201) << created.body;
  auto id = at(created.json, "request", "id").as_int64();

  auto many = get("/api/mobile/requests/show_many.json?tokens=" + std::to_string(id) +
                      ",101&include=last_comment&status=" + kAllStatuses +
                      "&sort_by=updated_at&sort_order=desc",
                  token);
  ASSERT_EQ(many.status, 200);
  EXPECT_EQ(sizeOf(at(many.json, "requests")), 2u);
  // A new token for the same guid is the same user.
  auto again = anonymousToken("guid-1");
  EXPECT_EQ(get("/api/mobile/requests/" + std::to_string(id) + ".json", again).status, 200);
  EXPECT_EQ(
      get("/api/mobile/requests/" + std::to_string(id) + ".json", anonymousToken("guid-2")).status,
      404);
  EXPECT_EQ(get("/api/mobile/requests/101.json", token).status, 404);
}

TEST_F(Requests, AgentCommentShowsUpInSinceFilteredComments) {
  auto token = demoToken();
  const std::string comments =
      "/api/mobile/requests/101/comments.json?sort_by=updated_at&sort_order=desc";
  auto before = get(comments + "&since=2026-01-05T12:00:00Z", token);
  ASSERT_EQ(before.status, 200);
  EXPECT_EQ(sizeOf(at(before.json, "comments")), 2u);

  auto reply = post("/_emulator/requests/101/comments", R"({"body":"Any news?"})");
  ASSERT_EQ(reply.status, 201) << reply.body;
  auto since = std::string(at(reply.json, "comment", "created_at").as_string());
  auto after = get(comments + "&since=" + since + "&role=agent", token);
  ASSERT_EQ(sizeOf(at(after.json, "comments")), 1u);
  EXPECT_EQ(at(after.json, "comments", 0, "body"), "Any news?");
  EXPECT_EQ(at(after.json, "users", 0, "agent"), true);
  EXPECT_EQ(at(get("/api/mobile/requests/101.json", token).json, "request", "status"), "pending");

  auto all = get(comments, token);
  EXPECT_EQ(sizeOf(at(all.json, "comments")), 5u);
  EXPECT_EQ(at(all.json, "comments", 0, "body"), "Any news?");  // newest first
  EXPECT_EQ(sizeOf(at(all.json, "users")), 3u);
}

TEST_F(Requests, ReplyAnswersTheRequestWithItsLastComment) {
  auto token = demoToken();
  auto a = put("/api/mobile/requests/102.json?include=last_comment",
               R"({"request":{"comment":{"value":"It is back again"}}})", token);
  ASSERT_EQ(a.status, 200) << a.body;
  EXPECT_EQ(at(a.json, "request", "last_comment", "body"), "It is back again");
  EXPECT_EQ(at(a.json, "request", "status"), "open");  // a reply reopens a solved request
  EXPECT_EQ(at(a.json, "request", "comment_count"), 3);
  EXPECT_EQ(
      put("/api/mobile/requests/102.json", R"({"request":{"comment":{"body":"x"}}})", token).status,
      422);
  EXPECT_EQ(put("/api/mobile/requests/999.json", R"({"request":{"comment":{"value":"x"}}})", token)
                .status,
            404);
}

TEST_F(Requests, ClosedRequestRefusesReplies) {
  auto reply = post("/_emulator/requests/103/comments", R"({"body":"Done","status":"closed"})");
  ASSERT_EQ(reply.status, 201);
  auto a =
      put("/api/mobile/requests/103.json", R"({"request":{"comment":{"value":"x"}}})", demoToken());
  EXPECT_EQ(a.status, 422);
}

}  // namespace
}  // namespace qvk::emulator::testing
