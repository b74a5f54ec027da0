// The HTTP cache: which answers it keeps, and its write-behind: entries are
// usable at once and reach the file later, in order with removals.
#include "quorvel/http_cache.h"

#include <filesystem>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

struct RuleCase {
  const char* name;
  HttpHeaderFields headers;
  bool stored;
  bool fresh;
};

void PrintTo(const RuleCase& c, std::ostream* os) {
  *os << c.name;
}

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
    ::testing::PrintToStringParamName());

HttpCacheEntry entry(const std::string& body) {
  HttpCacheEntry e;
  e.url = "http://h/x";
  e.httpVersion = "1.1";
  e.headers =
      std::make_shared<const HttpHeaderFields>(HttpHeaderFields{{"ETag", "\"" + body + "\""}});
  e.body = std::make_shared<const std::string>(body);
  e.storedAt = 1;
  e.freshUntil = 70;
  return e;
}

class HttpCacheTest : public testing::Test {
 protected:
  void SetUp() override {
    file_ = std::filesystem::temp_directory_path() /
            ("http-cache-test-" + std::to_string(std::random_device{}()) + ".sqlite");
  }
  void TearDown() override {
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(file_.string() + suffix);
    }
  }
  std::filesystem::path file_;
};

TEST_F(HttpCacheTest, StoredEntriesAreUsableAtOnceAndPersistInOrderWithRemovals) {
  const std::string binary("{\"x\":\0}", 7);
  {
    HttpCache cache(file_);
    EXPECT_EQ(cache.lookup("a"), nullptr);
    cache.store("a", entry("one"));
    cache.store("b", entry(binary));
    cache.store("a", entry("three"));  // the later store wins
    cache.store("gone", entry("x"));
    cache.remove("gone");  // removed while possibly still queued
    ASSERT_NE(cache.lookup("a"), nullptr);
    EXPECT_EQ(*cache.lookup("a")->body, "three");
  }  // the destructor writes what is queued
  HttpCache reopened(file_);
  const auto a = reopened.lookup("a");
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(*a->body, "three");
  EXPECT_EQ(a->etag(), "\"three\"");
  EXPECT_EQ(a->freshUntil, 70);
  ASSERT_NE(reopened.lookup("b"), nullptr);
  EXPECT_EQ(*reopened.lookup("b")->body, binary);
  EXPECT_EQ(reopened.lookup("gone"), nullptr);
  reopened.remove("a");
  EXPECT_EQ(reopened.lookup("a"), nullptr);
  reopened.clear();
  EXPECT_EQ(reopened.lookup("b"), nullptr);
}

TEST_F(HttpCacheTest, EntriesEvictedFromMemoryAreFoundBeforeAndAfterTheyReachTheFile) {
  HttpCache cache(
      file_, HttpCache::Limits{.memoryEntries = 2, .memoryBytes = 1 << 20, .diskEntries = 100});
  for (int i = 0; i < 10; ++i) cache.store("k" + std::to_string(i), entry(std::to_string(i)));
  for (const bool flushed : {false, true}) {
    if (flushed) cache.flush();
    for (int i = 0; i < 10; ++i) {
      auto found = cache.lookup("k" + std::to_string(i));
      ASSERT_NE(found, nullptr) << i << (flushed ? " in the file" : " queued");
      EXPECT_EQ(*found->body, std::to_string(i));
    }
  }
}

TEST_F(HttpCacheTest, ConcurrentStoresAndLookupsKeepEveryEntry) {
  HttpCache cache(
      file_, HttpCache::Limits{.memoryEntries = 8, .memoryBytes = 1 << 20, .diskEntries = 1000});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&cache, t] {
      for (int i = 0; i < 100; ++i) {
        const auto key = std::to_string(t) + "-" + std::to_string(i);
        cache.store(key, entry(key));
        EXPECT_NE(cache.lookup(key), nullptr);
        cache.lookup(std::to_string((t + 1) % 4) + "-" + std::to_string(i));
      }
    });
  }
  for (auto& th : threads) th.join();
  for (int t = 0; t < 4; ++t) {
    for (int i = 0; i < 100; i += 7) {
      const auto key = std::to_string(t) + "-" + std::to_string(i);
      auto found = cache.lookup(key);
      ASSERT_NE(found, nullptr) << key;
      EXPECT_EQ(*found->body, key);
    }
  }
}

}  // namespace
}  // namespace quorvel
