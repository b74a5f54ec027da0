#include "quorvel/settings_provider.h"

#include <gtest/gtest.h>

#include "quorvel/core_fixture_test.h"

namespace quorvel::testing {
namespace {

constexpr const char* kSettingsPath = "/api/mobile/sdk/settings/test-app.json";

// A record of the settings document. Records that do not decode are answered
// as nothing: ThroughTheCoreTest.ARecordThatDoesNotDecodeIsDeliveredAsNothing.
struct SupportFlag {
  bool enabled = false;
  static platform::Result<SupportFlag> decode(const boost::json::value& document) {
    boost::system::error_code ec;
    const auto* enabled = document.find_pointer("/support/enabled", ec);
    if (enabled == nullptr || !enabled->is_bool()) {
      return platform::Error::withDescription("test", 1, "no support.enabled");
    }
    return SupportFlag{enabled->get_bool()};
  }
  static SupportFlag defaultValue() { return {}; }
};

class SettingsProviderTest : public CoreTest {
 protected:
  void SetUp() override {
    CoreTest::SetUp();
    server_.Get(kSettingsPath, [this](const httplib::Request&, httplib::Response& res) {
      if (failing_) {
        res.status = 503;
        return;
      }
      res.set_content("{\"support\":{\"enabled\":true}}", "application/json");
    });
  }

  template <class T>
  std::pair<int, std::optional<T>> get() {
    auto result = std::make_shared<std::pair<int, std::optional<T>>>(0, std::nullopt);
    quorvel_->providerModule().settings->getSettings<T>([result](std::optional<T> settings) {
      ++result->first;
      result->second = std::move(settings);
    });
    EXPECT_EQ(result->first, 0) << "answers on the main queue, not inside the call";
    waitFor([&] { return result->first > 0; });
    loop_->runFor(std::chrono::milliseconds(5));
    return *result;
  }

  void ageKeptDocument() {
    auto& store = *quorvel_->storeModule().sessionStore;
    auto kept = store.value(SettingsProvider::kStoreKey)->as_object();
    kept["fetched_at"] = kept["fetched_at"].as_double() - 2 * 3600.0;
    store.store(kept, SettingsProvider::kStoreKey);
  }

  LoopbackServer server_;
  std::atomic<bool> failing_{false};
};

TEST_F(SettingsProviderTest, DownloadsOnceAndAnswersAgainFromTheKeptDocument) {
  start(server_.url());
  for (int i = 0; i < 2; ++i) {
    const auto answer = get<SupportFlag>();
    EXPECT_EQ(answer.first, 1);
    ASSERT_TRUE(answer.second);
    EXPECT_TRUE(answer.second->enabled);
  }
  EXPECT_EQ(server_.count(kSettingsPath), 1u);
  EXPECT_EQ(server_.seen(kSettingsPath).at(0).header("X-QV-App-Id"), "test-app");
}

TEST_F(SettingsProviderTest, AStaleDocumentIsDownloadedAgainAndKeptWhenThatFails) {
  start(server_.url());
  ASSERT_TRUE(get<SupportFlag>().second);
  ageKeptDocument();
  failing_ = true;
  const auto fallback = get<SupportFlag>();
  EXPECT_EQ(server_.count(kSettingsPath), 2u);
  ASSERT_TRUE(fallback.second);
  EXPECT_TRUE(fallback.second->enabled);

  // Also after a restart, and with nothing listening at all.
  start("http://127.0.0.1:9");
  const auto offline = get<SupportFlag>();
  EXPECT_TRUE(offline.second && offline.second->enabled);
}

TEST_F(SettingsProviderTest, WithoutAnyDocumentTheAnswerIsNothing) {
  failing_ = true;
  start(server_.url());
  const auto answer = get<SupportFlag>();
  EXPECT_EQ(answer.first, 1);
  EXPECT_FALSE(answer.second);

  quorvel_->shutdown();
  const auto afterShutdown = get<SupportFlag>();
  EXPECT_EQ(afterShutdown.first, 1);
  EXPECT_FALSE(afterShutdown.second);
}

struct HostileAppIdCase {
  const char* name;
  std::string appId;
  bool sent;  // else refused before anything leaves
};

class SettingsProviderAppIdTest : public SettingsProviderTest,
                                  public ::testing::WithParamInterface<HostileAppIdCase> {};

// The app id is one path segment (the server sees it whole, decoded) and
// never a second header line.
TEST_P(SettingsProviderAppIdTest, StaysInItsSegmentAndItsHeader) {
  server_.Get("/.*", [](const httplib::Request&, httplib::Response& res) { res.status = 404; });
  start(server_.url(), GetParam().appId);
  EXPECT_EQ(get<SupportFlag>().first, 1);
  const auto seen = server_.seen();
  if (!GetParam().sent) {
    EXPECT_TRUE(seen.empty());
    return;
  }
  ASSERT_EQ(seen.size(), 1u);
  EXPECT_EQ(seen[0].path, "/api/mobile/sdk/settings/" + GetParam().appId + ".json");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SettingsProviderAppIdTest,
    ::testing::Values(HostileAppIdCase{"DotSegments", "../../../../_emulator/x", true},
                      HostileAppIdCase{"Query", "x?y=", true},
                      HostileAppIdCase{"LineBreak", "demo\r\nX-Evil: injected", false},
                      HostileAppIdCase{"Nul", std::string("demo\0x", 6), false}),
    [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace quorvel::testing
