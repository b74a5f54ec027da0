#include "tools/qvk/field_argument.h"

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>

namespace qvk {
namespace {

struct FieldCase {
  const char* name;
  const char* text;
  std::optional<std::int64_t> id;  // none: the text is refused
  const char* valueJson = "";      // the value as JSON; "" for no value
};

void PrintTo(const FieldCase& c, std::ostream* os) {
  *os << c.name << ": " << c.text;
}

class FieldArguments : public ::testing::TestWithParam<FieldCase> {};

TEST_P(FieldArguments, TakeTheValueAsJsonWhenItParsesElseAsText) {
  const auto& c = GetParam();
  auto field = FieldArgument::parse(c.text);
  EXPECT_EQ(FieldArgument::check(c.text).empty(), c.id.has_value());
  if (!c.id) {
    EXPECT_FALSE(field);
    return;
  }
  ASSERT_TRUE(field);
  EXPECT_EQ(field->fieldId(), *c.id);
  if (*c.valueJson == '\0') {
    EXPECT_FALSE(field->value());
  } else {
    EXPECT_EQ(field->value(), boost::json::parse(c.valueJson));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FieldArguments,
    ::testing::Values(
        FieldCase{"Boolean", "7=true", 7, "true"},
        FieldCase{"Number", "360000050005=42", 360000050005, "42"},
        FieldCase{"Array", R"(7=["a","b"])", 7, R"(["a","b"])"},
        FieldCase{"NullIsNoValue", "7=null", 7}, FieldCase{"PlainWord", "7=hello", 7, R"("hello")"},
        FieldCase{"QuotedString", R"(7="42")", 7, R"("42")"},
        FieldCase{"EmptyValueIsEmptyText", "7=", 7, R"("")"},
        FieldCase{"OnlyTheFirstEqualsSplits", "7=a=b", 7, R"("a=b")"},
        FieldCase{"HalfJson", "7=[1,", 7, R"("[1,")"},
        FieldCase{"NegativeId", "-3=x", -3, R"("x")"}, FieldCase{"NoEquals", "7", std::nullopt},
        FieldCase{"NoId", "=1", std::nullopt}, FieldCase{"WordId", "seven=1", std::nullopt},
        FieldCase{"IdWithSpace", "7 =1", std::nullopt},
        FieldCase{"IdPastInt64", "9223372036854775808=1", std::nullopt}),
    [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace qvk
