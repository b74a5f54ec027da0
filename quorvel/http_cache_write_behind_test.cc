// The HTTP cache's write-behind: entries are usable at once and reach the
// file later, in order with removals.
#include <filesystem>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quorvel/http_cache.h"

namespace quorvel {
namespace {

HttpCacheEntry entry(const std::string& body) {
  HttpCacheEntry e;
  e.url = "http://h/x";
  e.httpVersion = "1.1";
  e.headers =
      std::make_shared<const HttpHeaderFields>(HttpHeaderFields{{"ETag", "\"" + body + "\""}});
  e.body = std::make_shared<const std::string>(body);
  e.storedAt = 1;
  e.freshUntil = 2;
  return e;
}

class HttpCacheWriteBehindTest : public testing::Test {
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

TEST_F(HttpCacheWriteBehindTest, StoredEntriesAreUsableAtOnceAndPersistInOrderWithRemovals) {
  {
    HttpCache cache(file_);
    EXPECT_EQ(cache.lookup("a"), nullptr);
    cache.store("a", entry("one"));
    cache.store("b", entry("two"));
    cache.store("a", entry("three"));  // the later store wins
    cache.store("gone", entry("x"));
    cache.remove("gone");  // removed while possibly still queued
    ASSERT_NE(cache.lookup("a"), nullptr);
    EXPECT_EQ(*cache.lookup("a")->body, "three");
  }  // the destructor writes what is queued
  HttpCache reopened(file_);
  ASSERT_NE(reopened.lookup("a"), nullptr);
  EXPECT_EQ(*reopened.lookup("a")->body, "three");
  EXPECT_EQ(reopened.lookup("a")->headers->at("ETag"), "\"three\"");
  ASSERT_NE(reopened.lookup("b"), nullptr);
  EXPECT_EQ(reopened.lookup("gone"), nullptr);
  reopened.clear();
  EXPECT_EQ(reopened.lookup("a"), nullptr);
}

TEST_F(HttpCacheWriteBehindTest, EntriesEvictedFromMemoryAreReadBackFromTheFile) {
  HttpCache cache(
      file_, HttpCache::Limits{.memoryEntries = 2, .memoryBytes = 1 << 20, .diskEntries = 100});
  for (int i = 0; i < 10; ++i) cache.store("k" + std::to_string(i), entry(std::to_string(i)));
  cache.flush();
  for (int i = 0; i < 10; ++i) {
    auto found = cache.lookup("k" + std::to_string(i));
    ASSERT_NE(found, nullptr) << i;
    EXPECT_EQ(*found->body, std::to_string(i));
  }
}

TEST_F(HttpCacheWriteBehindTest, ConcurrentStoresAndLookupsKeepEveryEntry) {
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
