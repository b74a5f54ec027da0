#include "quorvel/platform/strings_file.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

using Table = std::map<std::string, std::string>;

TEST(StringsFileTest, ParsesEntriesCommentsAndEscapes) {
  const struct {
    const char* name;
    std::string bytes;
    Table expected;
  } cases[] = {
      {"plain", R"("a" = "b"; "c"="d";)", {{"a", "b"}, {"c", "d"}}},
      {"comments",
       "/* block\n comment \"x\" = \"y\"; */\n\"k\" = /* inline */ \"v\"; // \"z\" = \"w\";\n",
       {{"k", "v"}}},
      {"escapes", R"("k" = "q\" b\\ n\n t\t r\r";)", {{"k", "q\" b\\ n\n t\t r\r"}}},
      {"unicode escapes", R"("k" = "\u00e9\U20AC \ud83d\ude00";)", {{"k", "é€ 😀"}}},
      {"unquoted", "key_1 = value.2;\n\"x\" = y;", {{"key_1", "value.2"}, {"x", "y"}}},
      {"key only", R"("same";)", {{"same", "same"}}},
      {"later wins", R"("k" = "1"; "k" = "2";)", {{"k", "2"}}},
      {"utf-8 with bom", "\xEF\xBB\xBF\"k\" = \"ü\";", {{"k", "ü"}}},
      {"utf-16le with bom",
       std::string("\xFF\xFE\"\0k\0\"\0=\0\"\0\xFC\0\"\0;\0", 18),
       {{"k", "ü"}}},
      {"utf-16be with bom",
       std::string("\xFE\xFF\0\"\0k\0\"\0=\0\"\0\xFC\0\"\0;", 18),
       {{"k", "ü"}}},
      {"empty", "", {}},
      {"only comments", "// nothing\n/* here */", {}},
  };
  for (const auto& c : cases) {
    auto parsed = StringsFile::parse(c.bytes);
    ASSERT_TRUE(parsed.ok()) << c.name << ": " << parsed.error().localizedDescription();
    EXPECT_EQ(*parsed, c.expected) << c.name;
  }
}

TEST(StringsFileTest, MalformedFileNamesTheLine) {
  const struct {
    const char* name;
    const char* bytes;
    const char* expectedLine;
  } cases[] = {
      {"missing semicolon", "\"a\" = \"b\";\n\"c\" = \"d\"\n\"e\" = \"f\";", "line 3"},
      {"unterminated string", "\"a\" = \"b\";\n\n\"c\" = \"d;\n", "line 3"},
      {"unterminated comment", "\"a\" = \"b\";\n/* open", "line 2"},
      {"missing value", "\"a\" = ;", "line 1"},
      {"bad unicode escape", "\n\"a\" = \"\\u12\";", "line 2"},
      {"stray character", "\"a\" = \"b\";\n#", "line 2"},
  };
  for (const auto& c : cases) {
    auto parsed = StringsFile::parse(c.bytes);
    ASSERT_FALSE(parsed.ok()) << c.name;
    EXPECT_EQ(parsed.error().domain, StringsFile::kErrorDomain);
    EXPECT_EQ(parsed.error().code, StringsFile::kMalformed) << c.name;
    EXPECT_NE(parsed.error().localizedDescription().find(c.expectedLine), std::string::npos)
        << c.name << ": " << parsed.error().localizedDescription();
  }
}

TEST(StringsFileTest, InvalidUtf8IsAnEncodingError) {
  auto parsed = StringsFile::parse("\"a\" = \"\xC3\x28\";");
  ASSERT_FALSE(parsed.ok());
  EXPECT_EQ(parsed.error().code, StringsFile::kBadEncoding);
}

}  // namespace
}  // namespace quorvel::platform
