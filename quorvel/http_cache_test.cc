#include "quorvel/http_cache.h"

#include <random>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

struct RuleCase {
  const char* name;
  HttpHeaderFields headers;
  bool stored;
  bool fresh;
};

class HttpCacheRuleTest : public ::testing::TestWithParam<RuleCase> {};

TEST_P(HttpCacheRuleTest, FollowsCacheControl) {
  const auto& param = GetParam();
  const auto response = HTTPURLResponse::make("http://127.0.0.1/x", 200, "1.1", param.headers);
  ASSERT_TRUE(response);
  const auto entry = HttpCacheEntry::fromResponse(CachedURLResponse(*response, "body"), 1000.0);
  ASSERT_EQ(entry.has_value(), param.stored);
  if (entry) {
    EXPECT_EQ(entry->isFresh(1000.5), param.fresh);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, HttpCacheRuleTest,
    ::testing::Values(
        RuleCase{"maxAge", {{"Cache-Control", "max-age=60"}}, true, true},
        RuleCase{"privateMaxAge", {{"cache-control", "private, max-age=60"}}, true, true},
        RuleCase{"noStore", {{"Cache-Control", "no-store, max-age=60"}}, false, false},
        RuleCase{"noCacheWithETag",
                 {{"Cache-Control", "no-cache, max-age=60"}, {"ETag", "\"a\""}},
                 true,
                 false},
        RuleCase{"noCacheWithoutValidator", {{"Cache-Control", "no-cache"}}, false, false},
        RuleCase{"nothingToGoBy", {}, false, false},
        RuleCase{
            "olderThanItsLifetime", {{"Cache-Control", "max-age=60"}, {"Age", "90"}}, false, false},
        RuleCase{"malformedMaxAgeWithETag",
                 {{"Cache-Control", "max-age=soon"}, {"etag", "\"b\""}},
                 true,
                 false}),
    [](const auto& testInfo) { return std::string(testInfo.param.name); });

TEST(HttpCacheTest, EntriesOutliveTheProcessAndTheMemoryLimit) {
  std::random_device random;
  const auto directory =
      std::filesystem::temp_directory_path() / ("quorvel-cache-test-" + std::to_string(random()));
  const auto file = directory / "cache.sqlite";
  HttpCacheEntry entry;
  entry.url = "http://127.0.0.1/a";
  entry.httpVersion = "1.1";
  entry.headers = std::make_shared<const HttpHeaderFields>(
      HttpHeaderFields{{"ETag", "\"e\""}, {"Content-Type", "application/json"}});
  entry.body = std::make_shared<const std::string>(std::string("{\"x\":\0}", 7));
  entry.storedAt = 10;
  entry.freshUntil = 70;
  {
    // Room for one entry in memory: the second pushes the first out to disk.
    HttpCache cache(file, HttpCache::Limits{1, 1 << 20, 10});
    cache.store("a", entry);
    cache.store("b", entry);
    const auto a = cache.lookup("a");
    ASSERT_TRUE(a);
    EXPECT_EQ(*a->body, *entry.body);
  }
  HttpCache reopened(file);
  const auto a = reopened.lookup("a");
  ASSERT_TRUE(a);
  EXPECT_EQ(*a->body, *entry.body);
  EXPECT_EQ(a->etag(), "\"e\"");
  EXPECT_EQ(a->freshUntil, 70);
  reopened.remove("a");
  EXPECT_FALSE(reopened.lookup("a"));
  reopened.clear();
  EXPECT_FALSE(reopened.lookup("b"));
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace quorvel
