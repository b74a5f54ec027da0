// Argument validation and the message formats it and the logger use.
#include "velmaro/util/qvk_validator.h"

#include <vector>

#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/util/string_format.h"

namespace velmaro {
namespace {

class QVKValidatorTest : public testing::Test {
 protected:
  void SetUp() override {
    quorvel::CoreLogger::setSink([this](quorvel::LogLevel level, std::string_view line) {
      if (level == quorvel::LogLevel::error) errors_.emplace_back(line);
    });
  }
  void TearDown() override { quorvel::CoreLogger::resetForTesting(); }
  std::vector<std::string> errors_;
};

TEST_F(QVKValidatorTest, MessagesNameTheArgumentAsWrittenInTheNameList) {
  using Callback = std::function<void(int)>;
  const Callback noCallback;
  const Callback callback = [](int) {};
  const std::optional<std::string> noId;
  struct Case {
    const char* label;
    VariableBindings bindings;
    std::optional<long> code;
    const char* message;
  };
  const Case cases[] = {
      {"absent id",
       qvk_NilSafeNSDictionaryOfVariableBindings("requestId, callback", noId, callback),
       QVKValidator::kNull, "The requestId is null, validation error"},
      // The blank after the comma stays part of the name: two spaces after "The".
      {"absent callback",
       qvk_NilSafeNSDictionaryOfVariableBindings("requestId, callback", std::string("1"),
                                                 noCallback),
       QVKValidator::kNull, "The  callback is null, validation error"},
      {"empty string",
       qvk_NilSafeNSDictionaryOfVariableBindings("query,callback", std::string(), callback),
       QVKValidator::kEmptyString, "The query is an empty string, validation error"},
      {"two failures report the first",
       qvk_NilSafeNSDictionaryOfVariableBindings("a,b", nullptr, std::string()),
       QVKValidator::kNull, "The a is null, validation error"},
      {"usable values", qvk_NilSafeNSDictionaryOfVariableBindings("id,n,cb", "x", 0, callback),
       std::nullopt, ""},
  };
  for (const auto& c : cases) {
    errors_.clear();
    auto error = QVKValidator::validateValues(c.bindings);
    ASSERT_EQ(error.has_value(), c.code.has_value()) << c.label;
    if (!error) {
      EXPECT_TRUE(errors_.empty()) << c.label;
      continue;
    }
    EXPECT_EQ(error->domain, "QVKParameterValidationErrorDomain") << c.label;
    EXPECT_EQ(error->code, *c.code) << c.label;
    EXPECT_EQ(error->localizedDescription(), c.message) << c.label;
    EXPECT_EQ(errors_, std::vector<std::string>{c.message}) << c.label;  // logged once
  }
}

TEST(StringFormatTest, ConversionsConsumeArgumentsInOrder) {
  const std::pair<std::string, std::string> cases[] = {
      {StringFormat::format("%s failed with %@", "-[P op:]", std::string("x")),
       "-[P op:] failed with x"},
      {StringFormat::format("%li B", 512), "512 B"},
      {StringFormat::format("%.1f %@B", 1.5, "K"), "1.5 KB"},
      {StringFormat::format("per_page=%ld&page=%ld", 100L, 1L), "per_page=100&page=1"},
      {StringFormat::format("\\%c", 'a'), "\\a"},
      {StringFormat::format("100%% of %@", std::optional<int>()), "100% of (null)"},
      {StringFormat::format("missing %@ and %@", "one"), "missing one and %@"},
      {StringFormat::format("%@ \xE2\x80\xA2 %@", "General", "FAQ"), "General \xE2\x80\xA2 FAQ"},
  };
  for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

}  // namespace
}  // namespace velmaro
