// Article HTML clean-up and article titles as plain text.
#include "velmaro/util/html_sanitizer.h"

#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"

namespace velmaro {
namespace {

struct RewriteCase {
  const char* input;
  const char* expected;
};

class HTMLSanitizerTest : public ::testing::TestWithParam<RewriteCase> {};

TEST_P(HTMLSanitizerTest, ClosesVoidElements) {
  EXPECT_EQ(HTMLSanitizer::clean(GetParam().input), GetParam().expected);
  EXPECT_EQ(HTMLSanitizer::cleanWithHtml(GetParam().input), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rewrites, HTMLSanitizerTest,
    ::testing::Values(
        RewriteCase{"a<br>b<br/>c", "a<br></br>b<br></br>c"}, RewriteCase{"<hr/>", "<hr></hr>"},
        RewriteCase{"<hr>", "<hr>"},
        RewriteCase{"x<br />y<BR>z", "x<br />y<BR>z"},  // only the exact texts are rewritten
        RewriteCase{"<img src=\"x\">", "<img src=\"x\"></img>"},
        // An identical tag found twice is closed twice, at both places.
        RewriteCase{"<img src=\"x\"><img src=\"x\">",
                    "<img src=\"x\"></img></img><img src=\"x\"></img></img>"},
        RewriteCase{"<img src=\"a\"/>", "<img src=\"a\"/></img>"},
        RewriteCase{"<img src=\"a\"></img>", "<img src=\"a\"></img></img>"},
        RewriteCase{"<IMG src=\"a\">", "<IMG src=\"a\">"},
        RewriteCase{"<img src=\"a\"><p>t</p><img src=\"b\">",
                    "<img src=\"a\"></img><p>t</p><img src=\"b\"></img>"},
        RewriteCase{"<p>Plain text, nothing to close</p>", "<p>Plain text, nothing to close</p>"},
        RewriteCase{"", ""}));

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
