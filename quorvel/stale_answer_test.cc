// A stored GET answer past its freshness stands in for a service that cannot
// be reached, and only then.
#include <gtest/gtest.h>

#include "quorvel/core_fixture_test.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/transport_error.h"
#include "quorvel/request_executor.h"

namespace quorvel::testing {
namespace {

struct StaleCase {
  const char* name;
  const char* cacheControl;  // of the first, stored answer
  std::chrono::seconds maxStaleAge;
  int secondStatus;  // 0: the server is gone by the second call
  bool standsIn;
  int age = 0;  // the stored answer's Age: how long it had been stale already
};

class StaleAnswerTest : public CoreTest, public ::testing::WithParamInterface<StaleCase> {
 protected:
  QuorvelOptions options() override {
    auto options = CoreTest::options();
    options.maxStaleAge = GetParam().maxStaleAge;
    return options;
  }
};

TEST_P(StaleAnswerTest, SecondCallAfterTheCopyWentStale) {
  const auto& param = GetParam();
  int status = 200;
  auto server = std::make_unique<LoopbackServer>();
  server->Get("/page", [&](const httplib::Request&, httplib::Response& res) {
    res.status = status;
    res.set_header("Cache-Control", param.cacheControl);
    res.set_header("ETag", "\"e1\"");
    if (param.age > 0) res.set_header("Age", std::to_string(param.age));
    res.set_content(status == 200 ? "v1" : "gone", "application/json");
  });
  const std::string url = server->url() + "/page";
  start(server->url());
  ASSERT_EQ(call(service(url)).status(), 200);

  if (param.secondStatus == 0) {
    server.reset();  // connection refused from now on
  } else {
    status = param.secondStatus;
  }
  int notices = 0;
  auto observer = platform::NotificationCenter::defaultCenter().observe(
      RequestExecutor::kStaleAnswerNotification, nullptr,
      [&](const platform::Notification&) { ++notices; });
  const auto second = call(service(url));

  EXPECT_EQ(second.calls, 1);
  if (param.standsIn) {
    EXPECT_FALSE(second.error);
    EXPECT_EQ(second.status(), 200);
    EXPECT_EQ(second.data.value_or(""), "v1");
    EXPECT_EQ(second.response->value("Warning").value_or(""), "111 - \"Revalidation Failed\"");
    EXPECT_EQ(notices, 1);
  } else {
    EXPECT_EQ(notices, 0);
    if (param.secondStatus == 0) {
      ASSERT_TRUE(second.error);
      EXPECT_EQ(second.error->code,
                static_cast<long>(platform::TransportErrorCode::kCannotConnectToHost));
    } else {
      EXPECT_EQ(second.status(), param.secondStatus);
      EXPECT_EQ(second.data.value_or(""), "gone");
    }
  }
}

constexpr std::chrono::seconds kMonth{30 * 24 * 3600};

INSTANTIATE_TEST_SUITE_P(
    Cases, StaleAnswerTest,
    ::testing::Values(StaleCase{"unreachable", "max-age=0", kMonth, 0, true},
                      StaleCase{"noCacheUnreachable", "no-cache", kMonth, 0, true},
                      StaleCase{"mustRevalidate", "must-revalidate, max-age=0", kMonth, 0, false},
                      StaleCase{"noStore", "no-store", kMonth, 0, false},
                      StaleCase{"standInTurnedOff", "max-age=0", std::chrono::seconds(0), 0, false},
                      StaleCase{"staleTooLong", "max-age=0", std::chrono::seconds(60), 0, false,
                                100},
                      StaleCase{"answered404", "max-age=0", kMonth, 404, false},
                      StaleCase{"answered500", "max-age=0", kMonth, 500, false}),
    [](const ::testing::TestParamInfo<StaleCase>& param) { return param.param.name; });

}  // namespace
}  // namespace quorvel::testing
