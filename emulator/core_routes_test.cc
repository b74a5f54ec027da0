#include <chrono>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "emulator/emulator_test_support.h"

namespace qvk::emulator::testing {
namespace {

using testing::PrintTo;

struct ExchangeCase {
  const char* name;
  const char* path;
  std::string body;
  int status;
};

class TokenExchange : public EmulatorTest, public ::testing::WithParamInterface<ExchangeCase> {};

TEST_P(TokenExchange, Answers) {
  const auto& c = GetParam();
  auto a = post(c.path, c.body);
  EXPECT_EQ(a.status, c.status) << a.body;
  if (c.status == 201) {
    EXPECT_GE(at(a.json, "/access_token").as_string().size(), 20u);
  } else {
    EXPECT_TRUE(at(a.json, "/error").is_string()) << a.body;
  }
}

// {"email":"x@example.com"} and {"name":"No Mail"} as base64url payloads.
const std::string kJwtWithEmail = "eyJhbGciOiJub25lIn0.eyJlbWFpbCI6InhAZXhhbXBsZS5jb20ifQ.c2ln";
const std::string kJwtWithoutEmail = "eyJhbGciOiJub25lIn0.eyJuYW1lIjoiTm8gTWFpbCJ9.c2ln";

INSTANTIATE_TEST_SUITE_P(
    Bodies, TokenExchange,
    ::testing::Values(
        ExchangeCase{"anonymous", "/api/mobile/sdk/access/anonymous.json",
                     R"({"identity":{"guid":"g-1","name":null,"email":null}})", 201},
        ExchangeCase{"anonymous_without_guid", "/api/mobile/sdk/access/anonymous.json",
                     R"({"identity":{"name":"x"}})", 422},
        ExchangeCase{"other_jwt", "/api/mobile/sdk/access/jwt.json",
                     R"({"identity":{"jwt":")" + kJwtWithEmail + R"("}})", 201},
        ExchangeCase{"jwt_without_email", "/api/mobile/sdk/access/jwt.json",
                     R"({"identity":{"jwt":")" + kJwtWithoutEmail + R"("}})", 401},
        ExchangeCase{"jwt_two_parts", "/api/mobile/sdk/access/jwt.json",
                     R"({"identity":{"jwt":"abc.def"}})", 401},
        ExchangeCase{"jwt_missing", "/api/mobile/sdk/access/jwt.json", R"({"identity":{}})", 422}),
    CaseName());

using Core = EmulatorTest;

std::string createBodyForRestart() {
  return R"({"request":{"subject":"Kept","comment":{"body":"Still here after a restart"}}})";
}

TEST_F(Core, NewJwtUserHasNoRequests) {
  auto token = tokenFrom(post("/api/mobile/sdk/access/jwt.json",
                              R"({"identity":{"jwt":")" + kJwtWithEmail + R"("}})"));
  auto a = get("/api/mobile/requests.json?status=new,open", token);
  EXPECT_EQ(a.status, 200);
  EXPECT_EQ(sizeOf(at(a.json, "/requests")), 0u);
}

TEST_F(Core, SettingsDocumentFollowsTheSwitches) {
  const std::string path = "/api/mobile/sdk/settings/any-app-id.json";
  expectChecks(get(path), {is("/support/conversations/enabled", true),
                           is("/support/system_message", ""), is("/help_center/locale", "en-us"),
                           is("/help_center/help_center_article_voting_enabled", true)});
  auto changed = put("/_emulator/settings",
                     R"({"conversations":false,"contact_us_tags":["x","y"],"hc_locale":"de"})");
  ASSERT_EQ(changed.status, 200) << changed.body;
  expectChecks(get(path),
               {is("/support/conversations/enabled", false),
                is("/support/contact_us/tags", {"x", "y"}), is("/help_center/locale", "de")});
  EXPECT_EQ(put("/_emulator/settings", R"({"voting":"yes"})").status, 422);
  EXPECT_EQ(put("/_emulator/settings", R"({"nonsense":true})").status, 422);
}

class SettingsFromOptions : public EmulatorTest {
  void tune(EmulatorOptions& o) override {
    o.ticketForms = false;
    o.voting = false;
    o.contactUsTags = {"app", "mobile"};
    o.helpCenterLocale = "de";
  }
};

TEST_F(SettingsFromOptions, CommandLineSwitchesReachTheDocument) {
  expectChecks(
      get("/api/mobile/sdk/settings/app.json"),
      {is("/support/ticket_forms/available", false),
       is("/help_center/help_center_article_voting_enabled", false),
       is("/support/contact_us/tags", {"app", "mobile"}), is("/help_center/locale", "de")});
}

TEST_F(Core, BlipsAreStoredAsReceived) {
  const std::string batch =
      R"({"blips":[{"group":"pathfinder","type":"user_action","action":"search","value":{"query":"pay"}},)"
      R"({"group":"behavioural","type":"page_view","pageId":42}]})";
  EXPECT_EQ(post("/api/mobile/sdk/blips.json", batch).status, 202);
  EXPECT_EQ(post("/api/mobile/sdk/blips.json", R"({"blips":{}})").status, 422);
  expectChecks(get("/_emulator/blips"),
               {sized("/blips", 2), is("/blips/0/value/query", "pay"), is("/blips/1/pageId", 42)});
  EXPECT_EQ(del("/_emulator/blips").status, 204);
  EXPECT_EQ(sizeOf(at(get("/_emulator/blips").json, "/blips")), 0u);
}

struct BlipIdCase {
  const char* name;
  std::string blips;  // the second batch; the first was {"blip_id":"a"},{}
  int status;
  std::int64_t accepted;  // in all, both batches
  std::int64_t repeated;
};

class BlipIds : public Core, public ::testing::WithParamInterface<BlipIdCase> {};

TEST_P(BlipIds, AnAcceptedIdIsDroppedAsARepeat) {
  const auto& c = GetParam();
  del("/_emulator/blips");
  ASSERT_EQ(post("/api/mobile/sdk/blips.json", R"({"blips":[{"blip_id":"a"},{}]})").status, 202);
  EXPECT_EQ(post("/api/mobile/sdk/blips.json", R"({"blips":[)" + c.blips + "]}").status, c.status);
  expectChecks(get("/_emulator/blips"), {sized("/blips", static_cast<std::size_t>(c.accepted)),
                                         is("/repeated", c.repeated)});
}

INSTANTIATE_TEST_SUITE_P(
    Blips, BlipIds,
    ::testing::Values(BlipIdCase{"SameId", R"({"blip_id":"a","n":2})", 202, 2, 1},
                      BlipIdCase{"SameIdTwiceInABatch", R"({"blip_id":"b"},{"blip_id":"b"})", 202,
                                 3, 1},
                      BlipIdCase{"NoIdIsAlwaysKept", R"({},{})", 202, 4, 0},
                      BlipIdCase{"OtherId", R"({"blip_id":"c"})", 202, 3, 0},
                      BlipIdCase{"EmptyIdIsRefused", R"({"blip_id":""})", 422, 2, 0},
                      BlipIdCase{"NumberIdIsRefused", R"({"blip_id":7})", 422, 2, 0}),
    [](const auto& param) { return std::string(param.param.name); });

TEST_F(Core, UnknownPathsAnswerJsonNotFound) {
  auto a = get("/api/v2/nothing/here.json");
  EXPECT_EQ(a.status, 404);
  expectChecks(a, {is("/error", "InvalidEndpoint")});
}

struct FaultCase {
  const char* name;
  std::string fault;
  int status;  // 0: the connection drops
  bool json;   // the body parses as JSON
};

class Faults : public EmulatorTest, public ::testing::WithParamInterface<FaultCase> {};

TEST_P(Faults, ApplyToTheNextRequestsOnly) {
  const auto& c = GetParam();
  const std::string path = "/api/mobile/sdk/settings/app.json";
  ASSERT_EQ(post("/_emulator/faults", c.fault).status, 201);
  auto hit = get(path);
  EXPECT_EQ(hit.status, c.status) << hit.body;
  EXPECT_EQ(!hit.json.is_null(), c.json) << hit.body;
  if (c.status == 0) client_ = std::make_unique<httplib::Client>("127.0.0.1", server_->port());
  auto next = get(path);
  EXPECT_EQ(next.status, 200);
  EXPECT_TRUE(next.json.is_object());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Faults,
    ::testing::Values(FaultCase{"status", R"({"count":1,"status":503})", 503, true},
                      FaultCase{"malformed", R"({"malformed":true})", 200, false},
                      FaultCase{"drop", R"({"drop":true})", 0, false},
                      FaultCase{"delay", R"({"delay_ms":50})", 200, true}),
    CaseName());

TEST_F(Core, FaultsCountAndFollowThePathPrefix) {
  ASSERT_EQ(
      post("/_emulator/faults", R"({"count":2,"status":500,"path_prefix":"/api/mobile/requests"})")
          .status,
      201);
  EXPECT_EQ(get("/api/mobile/sdk/settings/app.json").status, 200);
  EXPECT_EQ(get("/api/mobile/requests.json").status, 500);
  // Scenario controls never see faults.
  EXPECT_EQ(sizeOf(at(get("/_emulator/faults").json, "/faults")), 1u);
  EXPECT_EQ(get("/api/mobile/requests.json").status, 500);
  EXPECT_EQ(get("/api/mobile/requests.json").status, 401);

  post("/_emulator/faults", R"({"count":5,"status":502})");
  EXPECT_EQ(del("/_emulator/faults").status, 204);
  EXPECT_EQ(get("/api/mobile/sdk/settings/app.json").status, 200);
  EXPECT_EQ(post("/_emulator/faults", R"({"count":1})").status, 422);
}

TEST_F(Core, DemoIdentityIsPublished) {
  expectChecks(get("/_emulator/demo_identity"),
               {is("/jwt", boost::json::value(kDemoJwt)), is("/email", "demo@example.com")});
}

class SlowService : public EmulatorTest {
  void tune(EmulatorOptions& o) override { o.latencyMs = 120; }
};

TEST_F(SlowService, LatencyDelaysServiceAnswersOnly) {
  auto t0 = std::chrono::steady_clock::now();
  EXPECT_EQ(get("/api/mobile/sdk/settings/app.json").status, 200);
  auto elapsed = std::chrono::steady_clock::now() - t0;
  EXPECT_GE(elapsed, std::chrono::milliseconds(120));
}

class EmptySeed : public EmulatorTest {
  void tune(EmulatorOptions& o) override { o.seed = "empty"; }
};

TEST_F(EmptySeed, HasNoContent) {
  EXPECT_EQ(get("/api/v2/help_center/en-us/categories.json").status, 404);
  auto token = demoToken();
  EXPECT_EQ(sizeOf(at(get("/api/mobile/requests.json", token).json, "/requests")), 0u);
}

class PersistentDatabase : public EmulatorTest {
 protected:
  PersistentDatabase() { removeFiles(); }
  ~PersistentDatabase() override {
    client_.reset();
    server_.reset();
    removeFiles();
  }
  void tune(EmulatorOptions& o) override { o.dbPath = path_; }
  void removeFiles() {
    for (const char* suffix : {"", "-wal", "-shm"}) std::remove((path_ + suffix).c_str());
  }
  const std::string path_ =
      ::testing::TempDir() + "qvk-emulator-" + std::to_string(getpid()) + ".sqlite";
};

TEST_F(PersistentDatabase, KeepsDataAcrossRestartsWithoutSeedingAgain) {
  auto token = demoToken();
  ASSERT_EQ(post("/api/mobile/requests.json", createBodyForRestart(), token).status, 201);
  ASSERT_EQ(post("/api/mobile/sdk/blips.json", R"({"blips":[{"type":"page_view"}]})").status, 202);
  startWith(EmulatorOptions{});
  auto requests =
      get("/api/mobile/requests.json?status=new,open,pending,hold,solved,closed", demoToken());
  EXPECT_EQ(sizeOf(at(requests.json, "/requests")), 4u);
  EXPECT_EQ(sizeOf(at(get("/_emulator/blips").json, "/blips")), 1u);
  EXPECT_EQ(sizeOf(at(get("/api/v2/help_center/en-us/categories.json").json, "/categories")), 3u);
}

}  // namespace
}  // namespace qvk::emulator::testing
