#include "quorvel/platform/text_comparison.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

struct ComparisonCase {
  const char* label;
  const char* a;
  const char* b;
  int expected;
};

void PrintTo(const ComparisonCase& c, std::ostream* os) {
  *os << c.label;
}

class TextComparisonTest : public ::testing::TestWithParam<ComparisonCase> {};

TEST_P(TextComparisonTest, CaseInsensitiveCompare) {
  const auto& c = GetParam();
  EXPECT_EQ(TextComparison::caseInsensitiveCompare(c.a, c.b), c.expected);
  EXPECT_EQ(TextComparison::caseInsensitiveCompare(c.b, c.a), -c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TextComparisonTest,
    ::testing::Values(ComparisonCase{"asciiFolded", "Apple", "apple", 0},
                      ComparisonCase{"asciiOrder", "apple", "Banana", -1},
                      ComparisonCase{"prefixFirst", "app", "APPLE", -1},
                      ComparisonCase{"empty", "", "a", -1},
                      ComparisonCase{"accentedFolded", "\u00c9t\u00e9", "\u00e9T\u00c9", 0},
                      ComparisonCase{"umlautFolded", "\u00c4rger", "\u00e4RGER", 0},
                      // A byte comparison would put "É" (C3 89) before "é" (C3 A9).
                      ComparisonCase{"foldedBeforeOrder", "\u00e9a", "\u00c9z", -1},
                      ComparisonCase{"sharpSFoldsToSs", "stra\u00dfe", "STRASSE", 0},
                      ComparisonCase{"greekFolded", "\u03a3\u0399\u03a3", "\u03c3\u03b9\u03c3", 0},
                      ComparisonCase{"asciiAgainstAccent", "e", "\u00e9", -1}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace quorvel::platform
