// Article titles: HTML to plain text, and what a title that is not text logs.
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"

namespace velmaro {
namespace {

struct TitleCase {
  const char* json;  // the title as a JSON value
  const char* expected;
};

class TitleTest : public ::testing::TestWithParam<TitleCase> {};

TEST_P(TitleTest, BecomesPlainText) {
  const auto value = boost::json::parse(GetParam().json);
  EXPECT_EQ(QVKHelpCenterArticle::parseHTMLString(&value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Titles, TitleTest,
    ::testing::Values(TitleCase{R"("Q&amp;A &lt;b&gt;")", "Q&A <b>"},
                      TitleCase{R"("<b>Bold</b> text")", "Bold text"},
                      TitleCase{R"("Reset your password")", "Reset your password"},
                      TitleCase{R"("Caf&eacute; &#8211; menu")", "Caf\u00e9 \u2013 menu"},
                      TitleCase{R"("  padded  title ")", "padded title"}, TitleCase{"null", ""},
                      TitleCase{"42", ""}));

TEST(TitleLogTest, ANonStringTitleIsLoggedAsAnError) {
  std::vector<std::string> lines;
  quorvel::CoreLogger::setSink([&](quorvel::LogLevel level, std::string_view message) {
    if (level == quorvel::LogLevel::error) lines.emplace_back(message);
  });
  EXPECT_EQ(QVKHelpCenterArticle::parseHTMLString(nullptr), "");
  quorvel::CoreLogger::resetForTesting();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "Cannot parse title of the article: \"(null)\"");
}

}  // namespace
}  // namespace velmaro
