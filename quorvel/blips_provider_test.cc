#include "quorvel/blips_provider.h"

#include <set>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_fixture_test.h"

namespace quorvel::testing {
namespace {

constexpr const char* kBlipsPath = "/api/mobile/sdk/blips.json";

class BlipsProviderTest : public CoreTest {
 protected:
  // Long enough that a burst sent from a test on a loaded machine still
  // falls inside one coalescing window.
  QuorvelOptions options() override {
    auto o = CoreTest::options();
    o.blipDelay = std::chrono::milliseconds(300);
    return o;
  }

  void SetUp() override {
    CoreTest::SetUp();
    server_.Post(kBlipsPath, [this](const httplib::Request&, httplib::Response& res) {
      res.status = status_;
      res.set_content("{}", "application/json");
    });
  }

  std::optional<platform::Error> flush() {
    auto done = std::make_shared<std::pair<int, std::optional<platform::Error>>>();
    quorvel_->providerModule().blip->flush([done](std::optional<platform::Error> error) {
      ++done->first;
      done->second = std::move(error);
    });
    EXPECT_TRUE(waitFor([&] { return done->first > 0; }));
    return done->second;
  }

  // Every blip the service accepted, in the order received.
  std::vector<boost::json::value> accepted() {
    std::vector<boost::json::value> blips;
    for (const auto& request : server_.seen(kBlipsPath)) {
      const auto body = boost::json::parse(request.body);
      for (const auto& blip : body.at("blips").as_array()) blips.push_back(blip);
    }
    return blips;
  }

  LoopbackServer server_;
  std::atomic<int> status_{200};
};

TEST_F(BlipsProviderTest, ABurstGoesInOneBatchWithItsFields) {
  start(server_.url());
  auto& blips = *quorvel_->providerModule().blip;
  blips.send(UserAction("1.0", "search", "helpCenterForm", "dravik", "Dravik",
                        boost::json::value{{"query", "reset"}}),
             BlipsGroup::pathfinder);
  blips.send(PageView("1.0", "dravik", "https://h/a/1", "Title", "en", 9007199254740993, "en-us"),
             BlipsGroup::pathfinder);
  ASSERT_TRUE(waitFor([&] { return server_.count(kBlipsPath) == 1; }))
      << "batches sent: " << server_.count(kBlipsPath) << ", pending: " << blips.pendingCount();
  EXPECT_FALSE(flush());
  ASSERT_EQ(server_.count(kBlipsPath), 1u);

  auto sent = accepted();
  ASSERT_EQ(sent.size(), 2u);
  // Each blip carries its own id, made when it was queued.
  std::set<std::string> ids;
  for (auto& blip : sent) {
    auto* id = blip.as_object().if_contains("blip_id");
    ASSERT_TRUE(id && id->is_string());
    EXPECT_EQ(id->as_string().size(), 36u);
    ids.emplace(id->as_string());
    blip.as_object().erase("blip_id");
  }
  EXPECT_EQ(ids.size(), 2u);
  EXPECT_EQ(sent[0], boost::json::parse(R"({"type":"user_action","version":"1.0","action":"search",
      "label":"helpCenterForm","channel":"dravik","category":"Dravik","value":{"query":"reset"},
      "group":"pathfinder"})"));
  EXPECT_EQ(sent[1], boost::json::parse(R"({"type":"page_view","version":"1.0","channel":"dravik",
      "url":"https://h/a/1","page_title":"Title","navigator_language":"en",
      "page_id":9007199254740993,"page_locale":"en-us","group":"pathfinder"})"));
  EXPECT_EQ(blips.pendingCount(), 0u);
}

TEST_F(BlipsProviderTest, AFailedBatchStaysQueuedAcrossARestartAndIsSentOnce) {
  status_ = 500;
  start(server_.url());
  for (int i = 0; i < 3; ++i) {
    quorvel_->providerModule().blip->send(
        UserAction("1.0", "requestCreated", std::nullopt, "dravik", "Dravik",
                   boost::json::value{{"requestId", std::to_string(i)}}),
        BlipsGroup::behavioural);
  }
  const auto failure = flush();
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->code, 500);
  EXPECT_EQ(quorvel_->providerModule().blip->pendingCount(), 3u);

  status_ = 200;
  start(server_.url());
  EXPECT_EQ(quorvel_->providerModule().blip->pendingCount(), 3u);
  EXPECT_FALSE(flush());
  const auto before = server_.count(kBlipsPath);
  EXPECT_FALSE(flush());
  EXPECT_EQ(server_.count(kBlipsPath), before) << "nothing left to send";
  const auto sent = accepted();
  ASSERT_GE(sent.size(), 6u);
  // The last request carried the three, once.
  std::vector<std::string> ids;
  for (std::size_t i = sent.size() - 3; i < sent.size(); ++i) {
    ids.emplace_back(sent[i].at("value").at("requestId").as_string());
  }
  EXPECT_EQ(ids, (std::vector<std::string>{"0", "1", "2"}));
}

TEST_F(BlipsProviderTest, BlipsFromManyThreadsAreEachSentExactlyOnce) {
  start(server_.url());
  constexpr int kThreads = 4;
  constexpr int kEach = 30;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < kEach; ++i) {
        quorvel_->providerModule().blip->send(
            UserAction("1.0", "n", std::nullopt, "c", "C",
                       boost::json::value(std::int64_t{t * 1000 + i})),
            BlipsGroup::pathfinder);
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(flush());
  std::multiset<std::int64_t> values;
  for (const auto& blip : accepted()) values.insert(blip.at("value").as_int64());
  EXPECT_EQ(values.size(), static_cast<std::size_t>(kThreads * kEach));
  EXPECT_EQ(std::set<std::int64_t>(values.begin(), values.end()).size(), values.size());
}

}  // namespace
}  // namespace quorvel::testing
