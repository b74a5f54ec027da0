#include "quorvel/platform/url_encoding.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

using Set = UrlEncoding::CharacterSet;

TEST(UrlEncodingTest, LegacyEscapeLeavesReservedCharactersAndExistingEscapes) {
  const struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"https://h.example/api/mobile/uploads.json?filename=a b.png",
       "https://h.example/api/mobile/uploads.json?filename=a%20b.png"},
      {"?query=a,b&label_names=x/y+z=1", "?query=a,b&label_names=x/y+z=1"},
      {"!#$&'()*+,/:;=?@[]-._~", "!#$&'()*+,/:;=?@[]-._~"},
      {"already%20escaped%2F", "already%20escaped%2F"},
      {"100%", "100%"},
      {"\"<>\\^`{|}", "%22%3C%3E%5C%5E%60%7B%7C%7D"},
      {"tab\tnl\ndel\x7f", "tab%09nl%0Adel%7F"},
      {"Grüße", "Gr%C3%BC%C3%9Fe"},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(UrlEncoding::legacyEscape(c.in), c.out) << c.in;
}

TEST(UrlEncodingTest, EachSetKeepsItsOwnCharacters) {
  // The same input through every set: what is kept differs per URL part; a
  // '%' is always escaped, so that escaping twice shows.
  const std::string input = "a1 !$&'()*+,-./:;=?@_~[]#%é";
  const struct {
    Set set;
    const char* out;
  } cases[] = {
      {Set::urlQueryAllowed, "a1%20!$&'()*+,-./:;=?@_~%5B%5D%23%25%C3%A9"},
      {Set::urlFragmentAllowed, "a1%20!$&'()*+,-./:;=?@_~%5B%5D%23%25%C3%A9"},
      {Set::urlPathAllowed, "a1%20!$&'()*+,-./:%3B=%3F@_~%5B%5D%23%25%C3%A9"},
      {Set::urlPathSegmentAllowed, "a1%20!$&'()*+,-.%2F:%3B=%3F@_~%5B%5D%23%25%C3%A9"},
      {Set::urlHostAllowed, "a1%20!$&'()*+,-.%2F:;=%3F%40_~[]%23%25%C3%A9"},
      {Set::urlUserAllowed, "a1%20!$&'()*+,-.%2F%3A;=%3F%40_~%5B%5D%23%25%C3%A9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(UrlEncoding::encode(input, c.set), c.out) << static_cast<int>(c.set);
  }
}

TEST(UrlEncodingTest, ValidityOfUrlsAsTheyStand) {
  const struct {
    const char* text;
    bool valid;
  } cases[] = {
      {"https://h.example/a/b.png?x=1&y=2#top", true},
      {"https://h.example/a%20b", true},
      {"http://[::1]:8080/path", true},
      {"/relative/path?q=1", true},
      {"mailto:someone@example.com", true},
      {"https://h.example/a b.png", false},  // blank
      {"https://h.example/ü", false},        // non-ASCII
      {"https://h.example/100%", false},     // '%' without two hex digits
      {"https://h.example/%zz", false},
      {"https://h.example/a#b#c", false},  // two fragments
      {"https://h.example/a[1]", false},   // brackets outside the host
      {"1http://h.example/", false},       // scheme must start with a letter
      {"ht_tp://h.example/", false},
      {":no-scheme", false},
      {"", false},
      {"https://h.example/<script>", false},
  };
  for (const auto& c : cases) EXPECT_EQ(UrlEncoding::isValidUrl(c.text), c.valid) << c.text;
}

}  // namespace
}  // namespace quorvel::platform
