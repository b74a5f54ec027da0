// HTML clean-up: closing the void elements of article and comment HTML.
#include "velmaro/util/html_sanitizer.h"

#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace velmaro
