// The dispatcher against a real server on loopback: what is sent, how each
// outcome reaches the provider, and the facade it relies on.
#include <gtest/gtest.h>

#include "quorvel/anonymous_identity.h"
#include "quorvel/core_fixture_test.h"
#include "quorvel/jwt_identity.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/transport_error.h"
#include "velmaro/core/dispatcher_adapter.h"
#include "velmaro/core/dispatcher_adapter_error.h"
#include "velmaro/core/endpoint_kind.h"
#include "velmaro/core/qvk_api_dispatcher.h"
#include "velmaro/core/qvk_authentication_type_utilities.h"
#include "velmaro/core/support.h"

namespace velmaro {
namespace {

using quorvel::platform::Error;
using quorvel::platform::Url;
using quorvel::platform::URLRequest;

TEST(EndpointKindTest, KindAndAuthenticationByUrlAndIdentity) {
  using K = EndpointKind;
  struct Case {
    const char* url;
    K kind;
    bool authAnonymous;
    bool authJwt;
  };
  const Case cases[] = {
      {"https://h/api/v2/help_center/en-us/articles/1/votes/up.json", K::articleVote, true, true},
      {"https://h/api/v2/help_center/articles/5/down.json", K::articleVote, true, true},
      {"https://h/api/v2/help_center/votes/9.json", K::articleVote, true, true},
      {"https://h/api/v2/help_center/en-us/categories.json?per_page=100", K::helpCenter, false,
       true},
      {"https://h/hc/api/mobile/en-us/article_tree.json", K::helpCenter, false, true},
      {"https://h/api/mobile/help_center/search/deflect.json?query=a", K::helpCenter, false, true},
      {"https://h/api/mobile/uploads.json?filename=a.png", K::uploads, true, true},
      {"https://h/api/mobile/uploads/tok.json", K::uploads, true, true},
      {"https://h/api/mobile/requests.json", K::mobileAPI, true, true},
      {"https://h/api/v2/ticket_forms/show_many.json?ids=1", K::mobileAPI, true, true},
      // Escaped segments are read decoded.
      {"https://h/api/v2/help_center/vot%65s/9.json", K::articleVote, true, true},
      {"https://h/api/mobile/x/upl%6Fads.json", K::uploads, true, true},
  };
  const quorvel::AnonymousIdentity anonymous;
  const quorvel::JwtIdentity jwt("a.b.c");
  for (const auto& c : cases) {
    auto url = Url::make(c.url);
    ASSERT_TRUE(url) << c.url;
    EXPECT_EQ(EndpointKinds::kindOf(*url), c.kind) << c.url;
    EXPECT_EQ(EndpointKinds::requiresAuth(c.kind, nullptr), c.authAnonymous) << c.url;
    EXPECT_EQ(EndpointKinds::requiresAuth(c.kind, &anonymous), c.authAnonymous) << c.url;
    EXPECT_EQ(EndpointKinds::requiresAuth(c.kind, &jwt), c.authJwt) << c.url;
  }
  EXPECT_EQ(QVKAuthenticationTypeUtilities::authenticationTypeForIdentity(&jwt),
            QVKAuthenticationTypeJWT);
  EXPECT_EQ(QVKAuthenticationTypeUtilities::authenticationTypeForIdentity(&anonymous),
            QVKAuthenticationTypeAnonymous);
  EXPECT_EQ(QVKAuthenticationTypeUtilities::authenticationTypeForIdentity(nullptr),
            QVKAuthenticationTypeAnonymous);
}

TEST(DispatcherAdapterTest, MethodTextsMapCaseInsensitivelyWithGetAsTheFallback) {
  using M = quorvel::HttpMethod;
  const std::pair<std::optional<std::string>, M> cases[] = {
      {"Post", M::post}, {"POST", M::post}, {"post", M::post}, {"delete", M::delete_},
      {"PuT", M::put},   {"GET", M::get},   {"PATCH", M::get}, {std::nullopt, M::get},
  };
  for (const auto& [text, method] : cases) {
    EXPECT_EQ(DispatcherAdapter::httpMethod(text), method) << text.value_or("(none)");
  }
}

TEST(DispatcherAdapterTest, ATransportErrorWinsOverA404) {
  auto notFound = quorvel::HTTPURLResponse::make("https://h/x", 404, "1.1", {});
  auto lost = quorvel::platform::TransportError::make(
      quorvel::platform::TransportErrorCode::kNetworkConnectionLost);
  auto error = DispatcherAdapter::convertError(notFound, lost);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain, quorvel::platform::TransportError::kDomain);
  EXPECT_EQ(error->code, -1005);
  EXPECT_FALSE(DispatcherAdapter::convertError(std::nullopt, std::nullopt));
}

class DispatchTest : public quorvel::testing::CoreTest {
 protected:
  void SetUp() override {
    CoreTest::SetUp();
    server_.Post("/api/mobile/sdk/access/anonymous.json", [](const auto&, auto& res) {
      res.set_content(R"({"access_token":"anon-token"})", "application/json");
    });
    server_.Get(R"(/status/(\d+))", [](const httplib::Request& req, httplib::Response& res) {
      res.status = std::stoi(req.matches[1]);
      if (res.status != 204) res.set_content(R"({"s":1})", "application/json");
    });
    server_.Post(R"(/api/v2/help_center/articles/(\d+)/up.json)", [](const auto&, auto& res) {
      res.set_content(R"({"vote":{"id":1}})", "application/json");
    });
    start(server_.url());
    Support::initialize(quorvel_);
    unauthorized_ = quorvel::platform::NotificationCenter::defaultCenter().observe(
        "QVKUnauthorized", nullptr, [this](const auto&) { ++unauthorizedPosts_; });
  }
  void TearDown() override {
    unauthorized_.reset();
    Support::resetForTesting();
    QVKAPIDispatcher::resetForTesting();
    CoreTest::TearDown();
  }

  struct Outcome {
    int calls = 0;
    std::optional<QVKDispatcherResponse> response;
    std::optional<Error> error;
  };

  Outcome dispatch(const std::string& path, const char* method = "GET") {
    auto outcome = std::make_shared<Outcome>();
    QVKAPIDispatcher::instanceWithQuorvel(quorvel_)->executeRequest(
        [&] {
          URLRequest request(Url::make(server_.url() + path), method);
          request.setValue("yes", "X-Custom");
          return request;
        },
        [outcome](QVKDispatcherResponse r) {
          ++outcome->calls;
          outcome->response = std::move(r);
        },
        [outcome](Error e) {
          ++outcome->calls;
          outcome->error = std::move(e);
        });
    waitFor([&] { return outcome->calls > 0; });
    loop_->runFor(std::chrono::milliseconds(5));
    return *outcome;
  }

  quorvel::testing::LoopbackServer server_;
  quorvel::platform::NotificationCenter::Registration unauthorized_;
  int unauthorizedPosts_ = 0;
};

TEST_F(DispatchTest, StatusCodesBecomeSuccessOrErrorsOfTheHttpDomain) {
  struct Case {
    int status;
    bool success;
    bool withIdentity;
    int unauthorizedPosts;
  };
  const Case cases[] = {
      {200, true, false, 0},  {204, true, false, 0},  {404, false, false, 0},
      {500, false, false, 0}, {401, false, false, 1}, {401, false, true, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.status);
    quorvel_->setIdentity(c.withIdentity ? std::make_shared<quorvel::AnonymousIdentity>()
                                         : nullptr);
    unauthorizedPosts_ = 0;
    auto outcome = dispatch("/status/" + std::to_string(c.status));
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_EQ(outcome.response.has_value(), c.success);
    EXPECT_EQ(unauthorizedPosts_, c.unauthorizedPosts);
    if (c.success) {
      EXPECT_EQ(outcome.response->response->statusCode(), c.status);
      EXPECT_EQ(outcome.response->data.has_value(), c.status != 204);
      continue;
    }
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->domain, "com.quorvel.sdk");
    EXPECT_EQ(outcome.error->code, c.status);
    EXPECT_EQ(outcome.error->userInfo.at("status_code"),
              boost::json::value("HTTP Error: " + std::to_string(c.status)));
    EXPECT_FALSE(outcome.error->localizedDescription().empty());
  }
}

TEST_F(DispatchTest, ClientHeadersAndTheProvidersOwnHeadersAreSent) {
  auto outcome = dispatch("/status/200");
  ASSERT_EQ(outcome.calls, 1);
  auto seen = server_.seen("/status/200");
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].header("X-Custom"), "yes");
  EXPECT_EQ(seen[0].header("X-QV-Client").rfind("Support/", 0), 0U)
      << seen[0].header("X-QV-Client");
  EXPECT_EQ(seen[0].header("X-QV-App-Id"), "test-app");
}

TEST_F(DispatchTest, HelpCenterReadsAreAnonymousButVotesAuthenticate) {
  quorvel_->setIdentity(std::make_shared<quorvel::AnonymousIdentity>());
  server_.Get("/api/v2/help_center/en-us/categories.json",
              [](const auto&, auto& res) { res.set_content("{}", "application/json"); });
  ASSERT_TRUE(dispatch("/api/v2/help_center/en-us/categories.json").response);
  ASSERT_TRUE(dispatch("/api/v2/help_center/articles/5/up.json", "POST").response);
  auto read = server_.seen("/api/v2/help_center/en-us/categories.json");
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read[0].header("Authorization"), "");
  auto vote = server_.seen("/api/v2/help_center/articles/5/up.json");
  ASSERT_EQ(vote.size(), 1U);
  EXPECT_EQ(vote[0].header("Authorization"), "Bearer anon-token");
}

TEST_F(DispatchTest, ARequestWithoutUrlIsRefusedAtOnceOnTheCallersThread) {
  std::optional<Error> error;
  QVKAPIDispatcher::instanceWithQuorvel(quorvel_)->executeRequest(
      [] { return URLRequest(Url::make("http://h/labels=a b")); },  // not a valid URL
      [](QVKDispatcherResponse) { FAIL() << "no success expected"; },
      [&error](Error e) { error = std::move(e); });
  ASSERT_TRUE(error);  // before any pumping of the main queue
  EXPECT_EQ(error->domain, "Velmaro.DispatcherAdapterError");
  EXPECT_EQ(error->code, 0);
}

TEST_F(DispatchTest, ARefusedConnectionArrivesAsTheTransportsOwnError) {
  auto outcome = std::make_shared<Outcome>();
  QVKAPIDispatcher::instanceWithQuorvel(quorvel_)->executeRequestNoBlock(
      URLRequest(Url::make("http://127.0.0.1:1/api/mobile/requests.json")),
      [outcome](QVKDispatcherResponse) { ++outcome->calls; },
      [outcome](Error e) {
        ++outcome->calls;
        outcome->error = std::move(e);
      });
  quorvel_->setIdentity(nullptr);
  waitFor([&] { return outcome->calls > 0; });
  ASSERT_TRUE(outcome->error);
  EXPECT_EQ(outcome->error->domain, quorvel::platform::TransportError::kDomain);
}

class SupportTest : public testing::Test {
 protected:
  void SetUp() override {
    quorvel::CoreLogger::setLevel(quorvel::LogLevel::verbose);
    quorvel::CoreLogger::setSink([this](quorvel::LogLevel level, std::string_view line) {
      lines_.emplace_back(std::string(quorvel::logLevelName(level)) + " " + std::string(line));
    });
  }
  void TearDown() override {
    Support::resetForTesting();
    quorvel::Quorvel::resetForTesting();
    quorvel::CoreLogger::resetForTesting();
  }
  std::vector<std::string> lines_;
};

TEST_F(SupportTest, InstanceLifecycle) {
  EXPECT_EQ(Support::instance(), nullptr);
  EXPECT_EQ(Support::instance(), nullptr);
  ASSERT_EQ(lines_.size(), 2U);  // one warning per read
  EXPECT_EQ(lines_[0], "WARN Instance of Support is nil, have you initialized the Dravik?");

  quorvel::QuorvelOptions options;
  options.mainQueue = std::make_shared<quorvel::platform::RunLoop>();
  options.dataDirectory = std::filesystem::temp_directory_path() / "velmaro-support-test";
  auto core = quorvel::Quorvel::initialize("app", "http://127.0.0.1:1", "client", options);
  Support::initialize(core);
  auto first = Support::instance();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->quorvel(), core);
  first->setHelpCenterLocaleOverride("de");

  lines_.clear();
  Support::initialize(nullptr);  // an absent core object changes nothing
  EXPECT_EQ(Support::instance(), first);
  ASSERT_FALSE(lines_.empty());
  EXPECT_EQ(lines_[0].rfind(
                "ERROR The Quorvel instance passed into initialize(withQuorvel:) was nil.", 0),
            0U);

  Support::initialize(core);  // a second initialization replaces the facade
  EXPECT_NE(Support::instance(), first);
  EXPECT_FALSE(Support::instance()->helpCenterLocaleOverride().has_value());
  core->shutdown();
  std::filesystem::remove_all(*options.dataDirectory);
}

}  // namespace
}  // namespace velmaro
