#include "quorvel/platform/html_text.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

TEST(HtmlTextTest, MarkupDroppedEntitiesDecodedWhiteSpaceLikeABrowser) {
  const struct {
    const char* html;
    const char* text;
  } cases[] = {
      {"Q&amp;A &lt;b&gt;", "Q&A <b>"},
      {"<b>Bold</b> text", "Bold text"},
      {"caf&eacute; &#8364;5 &#x1F600; &nbsp;", "café €5 😀 \u00A0"},
      {"AT&T", "AT&T"},  // a bare ampersand is text
      {"<p>One <i>nested <b>deep</b></i></p>", "One nested deep"},
      {"  lots \t of\n\n  space  ", "lots of space"},
      {"<b>a</b><i>b</i>", "ab"},  // inline elements do not separate words
      {"<p>first</p><p>second</p>", "first\nsecond"},
      {"<div><p>a</p></div><div>b</div>", "a\nb"},
      {"line<br>break<br><br>twice", "line\nbreak\n\ntwice"},
      {"<ul><li>one</li> <li>two</li></ul>", "one\ntwo"},
      {"<pre>  keep\n  this</pre>", "  keep\n  this"},
      {"x<script>alert(1)</script><style>p{}</style>y", "xy"},
      {"<title>hidden</title>shown", "shown"},
      {"<!-- comment -->text", "text"},
      {"<p>  </p>", ""},
      {"unclosed <b>bold", "unclosed bold"},
      {"", ""},
  };
  for (const auto& c : cases) {
    auto text = HtmlText::toPlainText(c.html);
    ASSERT_TRUE(text.has_value()) << c.html;
    EXPECT_EQ(*text, c.text) << c.html;
  }
}

TEST(HtmlTextTest, FastPathOnlyForTextThatIsAlreadyPlain) {
  const struct {
    const char* text;
    bool plain;
  } cases[] = {
      {"How do I reset my password?", true},
      {"Grüße aus Köln", false},  // beyond ASCII: the parser may replace characters
      {"", true},
      {"a&amp;b", false},
      {"a<b", false},
      {" leading", false},
      {"trailing ", false},
      {"two  spaces", false},
      {"tab\there", false},
      {"new\nline", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(HtmlText::isAlreadyPlain(c.text), c.plain) << c.text;
    // Whichever path a text takes, the result is the same as a full parse's.
    const std::string wrapped = std::string("<span>") + c.text + "</span>";
    EXPECT_EQ(HtmlText::toPlainText(c.text), HtmlText::toPlainText(wrapped)) << c.text;
  }
}

TEST(HtmlTextTest, RefusesInvalidUtf8AndOversizedInput) {
  EXPECT_FALSE(HtmlText::toPlainText("bad \xC3\x28 byte").has_value());
  EXPECT_FALSE(HtmlText::toPlainText("\xED\xA0\x80").has_value());  // an encoded surrogate
  const std::string big(HtmlText::kMaxInputBytes + 1, 'a');
  EXPECT_FALSE(HtmlText::toPlainText(big).has_value());
}

TEST(HtmlTextTest, DeepNestingWorksUpToTheTagLimit) {
  std::string html;
  for (size_t i = 0; i < HtmlText::kMaxTags; ++i) html += "<span>";
  html += "deep";
  EXPECT_EQ(HtmlText::toPlainText(html), "deep");
  EXPECT_FALSE(HtmlText::toPlainText("<i>" + html).has_value());
}

}  // namespace
}  // namespace quorvel::platform
