#include "quorvel/blip_queue.h"

#include <random>

#include <gtest/gtest.h>

#include "quorvel/platform/sqlite_database.h"

namespace quorvel {
namespace {

namespace fs = std::filesystem;

// What the first holder does with the batch it claimed before a second
// queue on the same file (another process) claims.
enum class Holder { keeps, releases, removes };

struct LeaseCase {
  const char* name;
  Holder holder;
  std::chrono::milliseconds leaseTime;
  std::size_t secondClaims;
  std::size_t leftQueued;
};

class BlipQueueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ =
        fs::temp_directory_path() / ("blip-queue-test-" + std::to_string(std::random_device{}()));
  }
  void TearDown() override { fs::remove_all(dir_); }

  fs::path dir_;
};

class BlipQueueLeases : public BlipQueueTest, public ::testing::WithParamInterface<LeaseCase> {};

TEST_P(BlipQueueLeases, ASecondQueueClaimsOnlyWhatNoLiveLeaseHolds) {
  const auto& c = GetParam();
  BlipQueue first(dir_ / "blips.sqlite", c.leaseTime);
  BlipQueue second(dir_ / "blips.sqlite", c.leaseTime);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(first.append("{}"));
  const auto held = first.claim(2);
  ASSERT_EQ(held.rows.size(), 2u);
  if (c.holder == Holder::releases) first.release(held.lease);
  if (c.holder == Holder::removes) first.remove(held.lease);
  EXPECT_EQ(second.claim(10).rows.size(), c.secondClaims);
  EXPECT_EQ(second.count(), c.leftQueued);
}

INSTANTIATE_TEST_SUITE_P(
    Leases, BlipQueueLeases,
    ::testing::Values(
        LeaseCase{"HeldIsSkipped", Holder::keeps, std::chrono::minutes(1), 1, 3},
        LeaseCase{"ReleasedIsClaimedAgain", Holder::releases, std::chrono::minutes(1), 3, 3},
        LeaseCase{"RemovedIsGone", Holder::removes, std::chrono::minutes(1), 1, 1},
        LeaseCase{"ExpiredIsClaimedAgain", Holder::keeps, std::chrono::milliseconds(0), 3, 3}),
    [](const auto& param) { return std::string(param.param.name); });

TEST_F(BlipQueueTest, RowsQueuedBeforeLeasesExistedAreClaimed) {
  {
    platform::SqliteDatabase old(dir_ / "blips.sqlite",
                                 "CREATE TABLE blips (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                                 "blip TEXT NOT NULL); INSERT INTO blips (blip) VALUES ('{}')",
                                 nullptr);
    ASSERT_TRUE(old.persistent());
  }
  BlipQueue queue(dir_ / "blips.sqlite", std::chrono::minutes(1));
  EXPECT_EQ(queue.claim(10).rows, (std::vector<BlipQueue::Row>{{1, "{}"}}));
}

}  // namespace
}  // namespace quorvel
