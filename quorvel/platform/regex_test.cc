#include "quorvel/platform/regex.h"

#include <thread>

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

Regex compiled(std::string_view pattern, RegexOptions options = {}) {
  auto regex = Regex::compile(pattern, options);
  EXPECT_TRUE(regex.ok()) << pattern;
  return std::move(regex).value();
}

TEST(RegexTest, CompileFailureCarriesTheEngineMessage) {
  auto regex = Regex::compile("a{2");
  ASSERT_FALSE(regex.ok());
  EXPECT_EQ(regex.error().domain, "quorvel.regex");
  EXPECT_EQ(regex.error().code, Regex::kInvalidPattern);
  EXPECT_NE(regex.error().localizedDescription().find("U_REGEX_"), std::string::npos)
      << regex.error().localizedDescription();
}

TEST(RegexTest, AnchoredSearchMatchesOnlyAtTheRangeStart) {
  // The quantifier test of the ticket-form pattern cleaner: a count must start
  // exactly where the range starts.
  const auto count = compiled(R"(\{\d{1,},?\d*\})", {.dotMatchesLineSeparators = true});
  const std::u16string text = u"a{3}b{x}{3,10}";
  const struct {
    Range range;
    bool anchored;
    std::optional<Range> match;
  } cases[] = {
      {{1, 3}, true, Range{1, 3}},   // "{3}"
      {{0, 4}, true, std::nullopt},  // starts at 'a'
      {{0, 4}, false, Range{1, 3}},  // found later when not anchored
      {{5, 9}, true, std::nullopt},  // "{x}" first; "{3,10}" later does not count
      {{5, 9}, false, Range{8, 6}},   {{8, 6}, true, Range{8, 6}},
      {{8, 5}, true, std::nullopt},    // the range cuts the closing brace off
      {{14, 0}, false, std::nullopt},  // empty range at the end
  };
  for (const auto& c : cases) {
    auto match = count.firstMatch(text, c.range, c.anchored);
    ASSERT_TRUE(match.ok()) << c.range.location;
    EXPECT_EQ(*match, c.match) << c.range.location << "+" << c.range.length << " " << c.anchored;
  }
}

TEST(RegexTest, DotMatchesLineSeparatorsOnlyWhenAsked) {
  const std::string text = "a\nb";
  EXPECT_EQ(*compiled("a.b").numberOfMatches(text), 0u);
  EXPECT_EQ(*compiled("a.b", {.dotMatchesLineSeparators = true}).numberOfMatches(text), 1u);
}

// The image tags of HTMLSanitizerTest, with text that UTF-16 measures
// otherwise than UTF-8 ("😀" is two units, "é" one).
TEST(RegexTest, PositionsAreUtf16UnitsAndMatchTextsUtf8) {
  const auto images = compiled("<img[^>]+>");
  const std::string_view text = R"(😀é<img src="a">y<IMG src="b"><img src="é">)";
  EXPECT_EQ(*images.firstMatch(text), (Range{3, 13}));
  EXPECT_EQ(*images.matchTexts(text),
            (std::vector<std::string>{R"(<img src="a">)", R"(<img src="é">)"}));
  EXPECT_EQ(*images.numberOfMatches(std::string_view("no images")), 0u);
}

TEST(RegexTest, RangeOutsideTheTextIsAnError) {
  auto match = compiled("a").firstMatch(std::u16string_view(u"abc"), Range{2, 5});
  ASSERT_FALSE(match.ok());
  EXPECT_EQ(match.error().code, Regex::kRangeOutOfBounds);
}

TEST(RegexTest, CatastrophicPatternStopsWithAnError) {
  const auto regex = compiled("(a+)+$", {.timeLimit = std::chrono::milliseconds(20)});
  const std::string text = std::string(64, 'a') + "b";
  auto match = regex.firstMatch(text);
  ASSERT_FALSE(match.ok());
  EXPECT_EQ(match.error().domain, "quorvel.regex");
  EXPECT_EQ(match.error().code, Regex::kTimedOut);
  auto count = regex.numberOfMatches(text);
  ASSERT_FALSE(count.ok());
}

TEST(RegexTest, OneCompiledPatternServesSeveralThreads) {
  const auto words = compiled(R"(\w+)");
  const std::string text = "one two three four";
  std::vector<size_t> counts(4, 0);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < counts.size(); ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 200; ++i) counts[t] += *words.numberOfMatches(text);
    });
  }
  for (auto& thread : threads) thread.join();
  for (size_t count : counts) EXPECT_EQ(count, 800u);
}

}  // namespace
}  // namespace quorvel::platform
