// HttpHeaderFields: one field per name whatever its case, the first spelling
// kept, in name order, after any sequence of changes.
#include "quorvel/http_header_fields.h"

#include <cctype>
#include <functional>
#include <ostream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct FieldsCase {
  const char* name;
  std::function<void(HttpHeaderFields&)> change;
  Fields expected;
};

void PrintTo(const FieldsCase& c, std::ostream* out) {
  *out << c.name;
}

class HttpHeaderFieldsTest : public testing::TestWithParam<FieldsCase> {};

TEST_P(HttpHeaderFieldsTest, HoldsOneFieldPerNameInOrder) {
  HttpHeaderFields fields;
  GetParam().change(fields);
  EXPECT_EQ(Fields(fields.begin(), fields.end()), GetParam().expected);
  for (const auto& [name, value] : GetParam().expected) {
    std::string shouted = name;
    for (char& c : shouted) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const auto found = std::as_const(fields).find(shouted);
    ASSERT_NE(found, fields.end()) << shouted;
    EXPECT_EQ(found->second, value);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Changes, HttpHeaderFieldsTest,
    testing::Values(FieldsCase{"FirstSpellingAndValueKept",
                               [](HttpHeaderFields& f) {
                                 f.emplace("ETag", "a");
                                 f.emplace("etag", "b");
                               },
                               {{"ETag", "a"}}},
                    FieldsCase{"AssignKeepsTheSpelling",
                               [](HttpHeaderFields& f) {
                                 f.emplace("Cache-Control", "x");
                                 f.insert_or_assign("cache-control", "y");
                                 f["CACHE-CONTROL"] += "z";
                               },
                               {{"Cache-Control", "yz"}}},
                    FieldsCase{"OrderedWithoutRegardToCase",
                               [](HttpHeaderFields& f) {
                                 f.emplace("b", "1");
                                 f.emplace("Content-Type", "2");
                                 f.emplace("A", "3");
                                 f.emplace("content", "4");
                                 f.emplace("Content-Length", "5");
                               },
                               {{"A", "3"},
                                {"b", "1"},
                                {"content", "4"},
                                {"Content-Length", "5"},
                                {"Content-Type", "2"}}},
                    FieldsCase{"EraseFindsAnyCase",
                               [](HttpHeaderFields& f) {
                                 f = HttpHeaderFields{{"Age", "1"}, {"Warning", "2"}, {"age", "3"}};
                                 EXPECT_EQ(f.erase("AGE"), 1U);
                                 EXPECT_EQ(f.erase("Age"), 0U);
                               },
                               {{"Warning", "2"}}}),
    [](const testing::TestParamInfo<FieldsCase>& param) { return param.param.name; });

}  // namespace
}  // namespace quorvel
