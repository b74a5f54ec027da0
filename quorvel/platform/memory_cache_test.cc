#include "quorvel/platform/memory_cache.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

using Cache = MemoryCache<std::string, int>;

std::shared_ptr<const int> make(int v) {
  return std::make_shared<const int>(v);
}

TEST(MemoryCacheTest, CountLimitEvictsTheLeastRecentlyUsed) {
  Cache cache({.countLimit = 2});
  cache.setObject("a", make(1));
  cache.setObject("b", make(2));
  ASSERT_TRUE(cache.object("a"));  // "a" is now more recent than "b"
  cache.setObject("c", make(3));
  EXPECT_TRUE(cache.object("a"));
  EXPECT_FALSE(cache.object("b"));
  EXPECT_TRUE(cache.object("c"));
  EXPECT_EQ(cache.count(), 2U);
}

TEST(MemoryCacheTest, CostLimitEvictsUntilTheTotalFits) {
  Cache cache({.totalCostLimit = 100});
  cache.setObject("a", make(1), 40);
  cache.setObject("b", make(2), 40);
  cache.setObject("c", make(3), 50);  // 130 > 100: "a" goes
  EXPECT_FALSE(cache.object("a"));
  EXPECT_EQ(cache.totalCost(), 90U);
  cache.setObject("huge", make(4), 500);  // larger than the limit: nothing can stay
  EXPECT_EQ(cache.count(), 0U);
  EXPECT_EQ(cache.totalCost(), 0U);
}

TEST(MemoryCacheTest, ANullObjectLeavesTheEarlierEntry) {
  Cache cache;
  cache.setObject("a", make(1));
  cache.setObject("a", nullptr);
  ASSERT_TRUE(cache.object("a"));
  EXPECT_EQ(*cache.object("a"), 1);
  cache.setObject("a", make(2), 5);  // replacing adjusts the cost
  EXPECT_EQ(*cache.object("a"), 2);
  EXPECT_EQ(cache.totalCost(), 5U);
  cache.removeAll();
  EXPECT_EQ(cache.count(), 0U);
}

TEST(MemoryCacheTest, ConcurrentUseKeepsTheLimits) {
  Cache cache({.countLimit = 16});
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&cache, t] {
      for (int i = 0; i < 500; ++i) {
        const auto key = std::to_string((t * 7 + i) % 40);
        cache.setObject(key, make(i), 1);
        cache.object(std::to_string(i % 40));
        if (i % 50 == 0) cache.remove(key);
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_LE(cache.count(), 16U);
  EXPECT_EQ(cache.totalCost(), cache.count());
}

}  // namespace
}  // namespace quorvel::platform
