#include "quorvel/transfer_handle.h"

#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "quorvel/platform/run_loop.h"

namespace quorvel {
namespace {

using Count = std::pair<std::int64_t, std::int64_t>;

struct Observed {
  std::shared_ptr<platform::RunLoop> loop = std::make_shared<platform::RunLoop>();
  std::vector<Count> counts;
  std::shared_ptr<TransferHandle> handle = TransferHandle::make(
      [this](std::int64_t done, std::int64_t total) { counts.emplace_back(done, total); });
  Observed() { handle->deliverOn(loop); }
};

// A burst of counts is thinned to one per interval; the final one always comes, once.
TEST(TransferHandle, ThinsABurstAndKeepsTheFinalCount) {
  Observed observed;
  for (std::int64_t done = 1; done <= 1000; ++done) observed.handle->report(done, 1000, false);
  observed.handle->report(1000, 1000, true);
  observed.handle->report(1000, 1000, true);
  observed.loop->runPending();
  EXPECT_EQ(observed.counts, (std::vector<Count>{{1, 1000}, {1000, 1000}}));
}

TEST(TransferHandle, CountsComeAgainAfterTheInterval) {
  Observed observed;
  observed.handle->report(1, 10, false);
  std::this_thread::sleep_for(TransferHandle::kProgressInterval + std::chrono::milliseconds(20));
  observed.handle->report(2, 10, false);
  observed.loop->runPending();
  EXPECT_EQ(observed.counts.size(), 2u);
}

// A count already queued when the caller cancels is not shown; cancel wakes once.
TEST(TransferHandle, CancelHidesQueuedCountsAndWakesOnce) {
  Observed observed;
  int wakes = 0;
  observed.handle->onCancel([&] { ++wakes; });
  observed.handle->report(5, 10, false);
  observed.handle->cancel();
  observed.handle->cancel();
  observed.handle->report(10, 10, true);
  observed.loop->runPending();
  EXPECT_TRUE(observed.counts.empty());
  EXPECT_EQ(wakes, 1);
  observed.handle->onCancel([&] { ++wakes; });  // registered late: runs at once
  EXPECT_EQ(wakes, 2);
}

}  // namespace
}  // namespace quorvel
