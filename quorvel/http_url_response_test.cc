#include "quorvel/http_url_response.h"

#include <gtest/gtest.h>

namespace quorvel {
namespace {

TEST(HTTPURLResponseTest, MadeOnlyForAbsoluteHttpUrlsAndRealStatusCodes) {
  const std::pair<const char*, bool> urls[] = {
      {"http://h/x", true},
      {"https://H.example:8080/p?q=1#f", true},
      {"HTTP://h", true},
      {"http://user:pw@h/x", true},
      {"http://[::1]:80/x", true},
      {"http://127.0.0.1:4000/a/block.json&per_page=100", true},
      {"ftp://h/x", false},
      {"http:///x", false},
      {"http://", false},
      {"http://h:80a/", false},
      {"http://h/a b", false},
      {"/relative/path", false},
      {"http://[]/", false},
      {"", false},
  };
  for (const auto& [url, valid] : urls) {
    EXPECT_EQ(HTTPURLResponse::make(url, 200, "1.1", {}).has_value(), valid) << url;
  }
  EXPECT_FALSE(HTTPURLResponse::make("http://h/", 99, "1.1", {}));
  EXPECT_FALSE(HTTPURLResponse::make("http://h/", 600, "1.1", {}));
  auto response = HTTPURLResponse::make("http://h/", 304, "2", {{"ETag", "\"a\""}});
  ASSERT_TRUE(response);
  EXPECT_EQ(response->value("etag"), "\"a\"");  // names compared without regard to case
}

}  // namespace
}  // namespace quorvel
