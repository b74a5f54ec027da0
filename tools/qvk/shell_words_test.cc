#include "tools/qvk/shell_words.h"

#include <gtest/gtest.h>

namespace qvk {
namespace {

struct SplitCase {
  const char* name;
  std::string line;
  std::vector<std::string> words;
};

class ShellWordsSplit : public ::testing::TestWithParam<SplitCase> {};

TEST_P(ShellWordsSplit, GivesTheWordsAShellWould) {
  auto words = ShellWords::split(GetParam().line);
  ASSERT_TRUE(words.ok()) << words.error().localizedDescription();
  EXPECT_EQ(*words, GetParam().words);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ShellWordsSplit,
    ::testing::Values(
        SplitCase{"Empty", "", {}}, SplitCase{"OnlyBlanks", " \t  ", {}},
        SplitCase{"PlainWords", "hc  search\tpay", {"hc", "search", "pay"}},
        SplitCase{"DoubleQuotesGroup",
                  R"(hc search "reset my password")",
                  {"hc", "search", "reset my password"}},
        SplitCase{"SingleQuotesAreLiteral", R"(a 'b \" $x \n')", {"a", R"(b \" $x \n)"}},
        SplitCase{"EscapesInDoubleQuotes", R"("a \"b\" \\ \$ \x")", {R"(a "b" \ $ \x)"}},
        SplitCase{"BackslashOutsideQuotes", R"(a\ b c\"d \\)", {"a b", "c\"d", "\\"}},
        SplitCase{"AdjacentPartsJoin", R"(ab'c d'"e f"g)", {"abc de fg"}},
        SplitCase{"EmptyQuotedWords", R"(a '' "" b)", {"a", "", "", "b"}},
        SplitCase{"EmptyQuotedWordAtEnd", "a ''", {"a", ""}},
        SplitCase{"CommentStartsAWord", "hc categories # list them", {"hc", "categories"}},
        SplitCase{"HashInsideAWordIsKept", "a#b '#c'", {"a#b", "#c"}},
        SplitCase{
            "Utf8PassesThrough", "hc search 'Größe ändern'", {"hc", "search", "Größe ändern"}}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

struct ErrorCase {
  const char* name;
  std::string line;
  long code;
};

class ShellWordsError : public ::testing::TestWithParam<ErrorCase> {};

TEST_P(ShellWordsError, IsAnErrorNotAGuess) {
  auto words = ShellWords::split(GetParam().line);
  ASSERT_FALSE(words.ok());
  EXPECT_EQ(words.error().domain, ShellWords::kErrorDomain);
  EXPECT_EQ(words.error().code, GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ShellWordsError,
    ::testing::Values(
        ErrorCase{"UnterminatedSingle", "hc search 'pay", ShellWords::kUnterminatedQuote},
        ErrorCase{"UnterminatedDouble", R"(hc search "pay)", ShellWords::kUnterminatedQuote},
        ErrorCase{"EscapedClosingQuote", R"("pay\")", ShellWords::kUnterminatedQuote},
        ErrorCase{"TrailingBackslash", "hc search pay\\", ShellWords::kTrailingBackslash}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

}  // namespace
}  // namespace qvk
