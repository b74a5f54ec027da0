#include "velmaro/core/parse_arena.h"

#include <string>

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace velmaro {
namespace {

// A JSON array of `count` strings of 100 bytes.
std::string answerOf(std::size_t count) {
  boost::json::array items;
  for (std::size_t i = 0; i < count; ++i) items.emplace_back(std::string(100, 'a' + i % 26));
  return boost::json::serialize(items);
}

struct ArenaCase {
  const char* label;
  std::size_t outer;  // strings in the outer answer
  std::size_t inner;  // strings in an answer parsed while the outer is alive
};

class ParseArenaTest : public testing::TestWithParam<ArenaCase> {};

// An arena made while another lives on the same thread must not reuse the
// kept buffer the other holds; answers past what is kept spill to the heap.
TEST_P(ParseArenaTest, NestedParsesKeepTheirValues) {
  const auto outerText = answerOf(GetParam().outer);
  const auto innerText = answerOf(GetParam().inner);
  for (int round = 0; round < 2; ++round) {  // the second with the kept buffer
    ParseArena outer(outerText.size());
    const auto outerValue = boost::json::parse(outerText, outer.storage());
    {
      ParseArena inner(innerText.size());
      const auto innerValue = boost::json::parse(innerText, inner.storage());
      EXPECT_EQ(boost::json::serialize(innerValue), innerText);
    }
    EXPECT_EQ(boost::json::serialize(outerValue), outerText);
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, ParseArenaTest,
                         testing::Values(ArenaCase{"small_in_small", 3, 2},
                                         ArenaCase{"large_in_small", 3, 5000},
                                         ArenaCase{"small_in_large", 5000, 3},
                                         ArenaCase{"both_past_the_kept_limit", 30000, 30000}),
                         [](const testing::TestParamInfo<ArenaCase>& param) {
                           return param.param.label;
                         });

}  // namespace
}  // namespace velmaro
