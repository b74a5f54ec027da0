#include "quorvel/platform/url.h"

#include <gtest/gtest.h>

#include "quorvel/platform/url_request.h"

namespace quorvel::platform {
namespace {

TEST(UrlTest, SplitsValidUrlsAndRefusesInvalidOnes) {
  struct Case {
    const char* text;
    bool valid;
    const char* host;
    const char* path;
    std::vector<std::string> components;
  };
  const Case cases[] = {
      {"https://h.example:8080/api/v2/help_center/en-us/articles/1/votes/up.json?x=1",
       true,
       "h.example",
       "/api/v2/help_center/en-us/articles/1/votes/up.json",
       {"/", "api", "v2", "help_center", "en-us", "articles", "1", "votes", "up.json"}},
      {"http://127.0.0.1:4000/api/v2/help_center/en-us/articles/7/attachments/"
       "block.json&per_page=100",
       true,
       "127.0.0.1",
       "/api/v2/help_center/en-us/articles/7/attachments/block.json&per_page=100",
       {"/", "api", "v2", "help_center", "en-us", "articles", "7", "attachments",
        "block.json&per_page=100"}},
      {"http://h/a%20b//c/", true, "h", "/a%20b//c/", {"/", "a b", "c"}},
      {"http://h", true, "h", "", {}},
      {"http://h/labels=a b", false, "", "", {}},  // a blank is not valid as it stands
      {"http://h/caf\xC3\xA9", false, "", "", {}},
      {"", false, "", "", {}},
  };
  for (const auto& c : cases) {
    auto url = Url::make(c.text);
    ASSERT_EQ(url.has_value(), c.valid) << c.text;
    if (!url) continue;
    EXPECT_EQ(url->host(), c.host) << c.text;
    EXPECT_EQ(url->path(), c.path) << c.text;
    EXPECT_EQ(url->pathComponents(), c.components) << c.text;
    EXPECT_EQ(url->absoluteString(), c.text);
  }
  auto url = Url::make("http://h/a/up.json?q=1#frag");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->lastPathComponent(), "up.json");
  EXPECT_EQ(url->query(), "q=1");
  EXPECT_EQ(url->fragment(), "frag");
}

TEST(URLRequestTest, HeaderLookupIgnoresCaseAndSettingReplaces) {
  URLRequest request(Url::make("http://h/x"), "POST");
  request.setValue("a", "Content-Type");
  request.setValue("b", "content-type");
  EXPECT_EQ(request.allHTTPHeaderFields().size(), 1U);
  EXPECT_EQ(request.value("CONTENT-TYPE"), "b");
  EXPECT_FALSE(request.value("Accept").has_value());
}

}  // namespace
}  // namespace quorvel::platform
