// The creation model: custom fields and the create request's attachments.
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/requests/qvk_create_request.h"
#include "velmaro/requests/qvk_create_request_utilities.h"

namespace velmaro {
namespace {

struct FieldCase {
  const char* label;
  const char* json;
  std::int64_t id;
  const char* dictionary;  // customFieldDictionary, serialised
  bool warns;
};

class CustomFieldFromDictionaryTest : public ::testing::TestWithParam<FieldCase> {};

TEST_P(CustomFieldFromDictionaryTest, IdValueAndWarning) {
  std::vector<std::string> warnings;
  quorvel::CoreLogger::setSink([&](quorvel::LogLevel level, std::string_view message) {
    if (level == quorvel::LogLevel::warn) warnings.emplace_back(message);
  });
  auto field = CustomField::initWithDictionary(boost::json::parse(GetParam().json).as_object());
  quorvel::CoreLogger::resetForTesting();
  EXPECT_EQ(field.fieldId(), GetParam().id);
  EXPECT_EQ(boost::json::serialize(field.customFieldDictionary()), GetParam().dictionary);
  EXPECT_EQ(warnings, GetParam().warns ? std::vector<std::string>{CustomField::kIdNotInt64Warning}
                                       : std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(
    Dictionaries, CustomFieldFromDictionaryTest,
    ::testing::Values(
        FieldCase{"numberAndText", R"({"id": 5, "value": "x"})", 5, R"({"id":5,"value":"x"})",
                  false},
        FieldCase{"booleanStaysBoolean", R"({"id": 5, "value": false})", 5,
                  R"({"id":5,"value":false})", false},
        FieldCase{"nullValueWritesNull", R"({"id": 5, "value": null})", 5,
                  R"({"id":5,"value":null})", false},
        FieldCase{"multiSelect", R"({"id": 5, "value": ["a", "b"]})", 5,
                  R"({"id":5,"value":["a","b"]})", false},
        FieldCase{"fractionTruncated", R"({"id": 7.9})", 7, R"({"id":7,"value":null})", false},
        FieldCase{"hugeIdIsNoId", R"({"id": 1e30})", 0, R"({"id":0,"value":null})", true},
        FieldCase{"missingId", R"({"value": 1})", 0, R"({"id":0,"value":1})", true},
        FieldCase{"textId", R"({"id": "5", "value": 1})", 0, R"({"id":0,"value":1})", true},
        FieldCase{"nullId", R"({"id": null})", 0, R"({"id":0,"value":null})", true}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(CreateRequest, AttachmentsKeepTokensAndSkipNulls) {
  QVKCreateRequest request;
  request.setAttachments(boost::json::parse(R"(["t1", null, "t2", {}, 3])").as_array());
  EXPECT_EQ(request.attachments(), (std::vector<std::string>{"t1", "t2", "3"}));
  ASSERT_EQ(request.attachmentsAlias->size(), 3u);
  EXPECT_FALSE((*request.attachmentsAlias)[0].attachment);
}

TEST(CreateRequest, FromDictionary) {
  auto request = QVKCreateRequest::initWithDict(
      boost::json::parse(
          R"({"subject": "s", "request_description": "d", "tags": ["a", 1, "b"],
          "attachments": ["t"], "custom_fields": [{"id": 4, "value": "v"}]})")
          .as_object());
  EXPECT_EQ(request.subject, "s");
  EXPECT_EQ(request.requestDescription, "d");
  EXPECT_EQ(request.tags, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(request.attachments(), std::vector<std::string>{"t"});
  EXPECT_EQ(request.customFields, std::vector<CustomField>{CustomField(4, "v")});
  EXPECT_FALSE(request.ticketFormId);
  EXPECT_EQ(QVKCreateRequestUtilities::customTicketFieldsWithConfig(nullptr, request),
            request.customFields);
  EXPECT_EQ(request.description().rfind("Request:\nsubject [s]\n", 0), 0u);

  auto empty = QVKCreateRequest::initWithDict({});
  EXPECT_TRUE(empty.tags.empty() && !empty.attachments() && empty.customFields.empty());
  EXPECT_FALSE(empty.subject || empty.ticketFormId);
}

}  // namespace
}  // namespace velmaro
