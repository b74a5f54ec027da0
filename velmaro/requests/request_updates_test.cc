// Unread counts from stored counters.
#include "velmaro/requests/request_updates.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace velmaro {
namespace {

struct UpdatesCase {
  const char* label;
  std::vector<RequestForStorage> stored;
  std::map<std::string, std::int64_t> updates;
  std::int64_t total;
  bool anyUpdated;
  std::vector<std::string> unread;
};

class RequestUpdatesTest : public testing::TestWithParam<UpdatesCase> {};

TEST_P(RequestUpdatesTest, Calculated) {
  const auto updates = RequestUpdates::calculateRequestUpdates(GetParam().stored);
  EXPECT_EQ(updates.requestUpdates(), GetParam().updates);
  EXPECT_EQ(updates.totalUpdates(), GetParam().total);
  EXPECT_EQ(updates.hasUpdatedRequests(), GetParam().anyUpdated);
  for (const auto& record : GetParam().stored) {
    const bool expected = std::find(GetParam().unread.begin(), GetParam().unread.end(),
                                    record.requestId()) != GetParam().unread.end();
    EXPECT_EQ(updates.isRequestUnread(record.requestId()), expected) << record.requestId();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Counters, RequestUpdatesTest,
    testing::Values(UpdatesCase{"nothingStored", {}, {}, 0, false, {}},
                    UpdatesCase{"readOnesLeftOut",
                                {RequestForStorage("a", 5, 3), RequestForStorage("b", 2, 2)},
                                {{"a", 2}},
                                2,
                                true,
                                {"a"}},
                    UpdatesCase{"moreReadThanCountedIsNegative",
                                {RequestForStorage("a", 5, 3), RequestForStorage("c", 1, 3)},
                                {{"a", 2}, {"c", -2}},
                                0,
                                true,
                                {"a"}},
                    UpdatesCase{"laterRecordWins",
                                {RequestForStorage("a", 5, 3), RequestForStorage("a", 9, 3)},
                                {{"a", 6}},
                                6,
                                true,
                                {"a"}},
                    UpdatesCase{"extremeCountersSaturate",
                                {RequestForStorage("x", INT64_MAX, -1)},
                                {{"x", INT64_MAX}},
                                INT64_MAX,
                                true,
                                {"x"}}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace velmaro
