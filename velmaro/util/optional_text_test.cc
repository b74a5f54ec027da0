// OptionalText keeps absent, empty and any bytes apart, and copies deeply.
#include "velmaro/util/optional_text.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace velmaro {
namespace {

struct TextCase {
  const char* label;
  std::optional<std::string> text;
};

class OptionalTextTest : public ::testing::TestWithParam<TextCase> {};

TEST_P(OptionalTextTest, KeepsTheText) {
  const OptionalText original(GetParam().text);
  const OptionalText copy = original;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_EQ(copy.toOptional(), GetParam().text);
  EXPECT_EQ(copy, original);
  EXPECT_EQ(copy.has_value(), GetParam().text.has_value());
  EXPECT_EQ(copy.value_or("fallback"), GetParam().text.value_or("fallback"));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, OptionalTextTest,
    ::testing::Values(TextCase{"absent", std::nullopt}, TextCase{"empty", std::string()},
                      TextCase{"short", std::string("Topic 1")},
                      TextCase{"withNulAndMultibyte", std::string("a\0b \xE2\x80\xA2 c", 9)},
                      TextCase{"long", std::string(5000, 'x')}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(OptionalTextTest, AbsentAndEmptyDiffer) {
  EXPECT_FALSE(OptionalText() == OptionalText(""));
}

}  // namespace
}  // namespace velmaro
