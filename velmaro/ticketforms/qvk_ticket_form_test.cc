// The ticket-form records: values as the dictionary held them, type codes,
// options, and the numeric reading of ids.
#include "velmaro/ticketforms/qvk_ticket_form.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/ticketforms/qvk_ticket_field.h"
#include "velmaro/ticketforms/raw_json.h"

namespace velmaro {
namespace {

using Raw = std::optional<boost::json::value>;

boost::json::object object(std::string_view json) {
  return boost::json::parse(json).as_object();
}

// The value a JSON snippet gives; nullptr: missing.
Raw raw(const char* json) {
  return json == nullptr ? Raw() : Raw(boost::json::parse(json));
}

static_assert(QVKTicketFieldTypeUnknown == std::numeric_limits<std::uint64_t>::max());
static_assert(static_cast<std::int64_t>(QVKTicketFieldTypeUnknown) == -1);

struct FieldCase {
  const char* label;
  const char* json;
  // JSON of the expected values; nullptr for a missing one.
  const char* fieldId;
  const char* title;
  const char* validationRegex;
  const char* fieldDescription;
  const char* titleInPortal;
  bool required;
  QVKTicketFieldType type;
  std::size_t options;
  std::size_t systemOptions;
};

class TicketFieldTest : public ::testing::TestWithParam<FieldCase> {};

TEST_P(TicketFieldTest, TakesEveryValueAsItStands) {
  const auto& c = GetParam();
  const auto field = QVKTicketField::initWithDictionary(object(c.json));
  EXPECT_EQ(field.fieldId, raw(c.fieldId));
  EXPECT_EQ(field.title, raw(c.title));
  EXPECT_EQ(field.validationRegex, raw(c.validationRegex));
  EXPECT_EQ(field.fieldDescription, raw(c.fieldDescription));
  EXPECT_EQ(field.titleInPortal, raw(c.titleInPortal));
  EXPECT_EQ(field.required, c.required);
  EXPECT_EQ(field.type, c.type);
  EXPECT_EQ(field.options.size(), c.options);
  EXPECT_EQ(field.systemOptions.size(), c.systemOptions);
}

INSTANTIATE_TEST_SUITE_P(
    Records, TicketFieldTest,
    ::testing::Values(FieldCase{"Complete",
                                R"({"id": 360001, "title": "Order", "required": true,
                      "regexp_for_validation": "\\d{3,5}", "description": "Your order",
                      "title_in_portal": "Order number", "type": "regexp",
                      "custom_field_options": [{"id": 1}, {"id": 2}],
                      "system_field_options": [{"name": "Low", "value": "low"}]})",
                                "360001", R"("Order")", R"("\\d{3,5}")", R"("Your order")",
                                R"("Order number")", true, QVKTicketFieldTypeRegexp, 2, 1},
                      FieldCase{"NullsStayNull",
                                R"({"id": null, "title": null, "regexp_for_validation": null,
                      "description": null, "title_in_portal": null, "required": null,
                      "type": null, "custom_field_options": null,
                      "system_field_options": null})",
                                "null", "null", "null", "null", "null", false,
                                QVKTicketFieldTypeUnknown, 0, 0},
                      FieldCase{"MissingKeysStayEmpty", "{}", nullptr, nullptr, nullptr, nullptr,
                                nullptr, false, QVKTicketFieldTypeUnknown, 0, 0},
                      FieldCase{"WrongKindsAreKeptNotConverted",
                                R"({"id": "12", "title": 5, "regexp_for_validation": ["a"],
                      "description": {"x": 1}, "title_in_portal": false, "required": "true",
                      "type": 4, "custom_field_options": {"id": 1},
                      "system_field_options": "low"})",
                                R"("12")", "5", R"(["a"])", R"({"x": 1})", "false", true,
                                QVKTicketFieldTypeUnknown, 0, 0},
                      FieldCase{"HugeNumbersAsParsed",
                                R"({"id": 18446744073709551615, "title": 1e308, "required": 0.5,
                      "type": "Text"})",
                                "18446744073709551615", "1e308", nullptr, nullptr, nullptr, true,
                                QVKTicketFieldTypeUnknown, 0, 0},
                      FieldCase{"OptionsThatAreNotObjectsAreEmptyOnes",
                                R"({"type": "multiselect", "custom_field_options": [1, null, "x"],
                      "system_field_options": [[]]})",
                                nullptr, nullptr, nullptr, nullptr, nullptr, false,
                                QVKTicketFieldTypeMultiselect, 3, 1}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(TicketFieldTest, DeepValuesAreKeptWhole) {
  const std::string nested = std::string(400, '[') + "\"deep\"" + std::string(400, ']');
  boost::json::parse_options options;
  options.max_depth = 1000;
  const auto json = boost::json::parse(R"({"title": )" + nested + "}", {}, options);
  const auto field = QVKTicketField::initWithDictionary(json.as_object());
  EXPECT_EQ(field.title, json.as_object().at("title"));
  EXPECT_FALSE(RawJson::string(field.title));
}

TEST(TicketFieldTest, JsonOutputKeepsNullAndLeavesMissingOut) {
  const auto field = QVKTicketField::initWithDictionary(
      object(R"({"id": 1, "regexp_for_validation": null, "type": "date"})"));
  const auto json = boost::json::value_from(field).as_object();
  EXPECT_EQ(json.at("fieldId"), 1);
  EXPECT_TRUE(json.at("validationRegex").is_null());
  EXPECT_FALSE(json.contains("title"));
  EXPECT_EQ(json.at("type"), 9u);
}

TEST(TicketFieldTest, TypeWordsMapToTheSystemsCodes) {
  // In code order: 0 to 14, then words that are no type.
  const char* const words[] = {
      "subject",           "description", "regexp",  "textarea",   "text",
      "checkbox",          "tagger",      "integer", "decimal",    "date",
      "partialcreditcard", "priority",    "status",  "tickettype", "multiselect"};
  for (std::uint64_t code = 0; code < std::size(words); ++code) {
    EXPECT_EQ(QVKTicketField::ticketTypeForString(words[code]), code) << words[code];
  }
  for (const char* other : {"Text", "text ", "", "lookup"}) {
    EXPECT_EQ(QVKTicketField::ticketTypeForString(other), QVKTicketFieldTypeUnknown) << other;
  }
}

struct OptionCase {
  const char* label;
  const char* json;
  const char* fieldOptionId;
  const char* name;
  const char* value;
  bool isDefaultValue;
};

class TicketFieldOptionTest : public ::testing::TestWithParam<OptionCase> {};

TEST_P(TicketFieldOptionTest, OptionsAndSystemOptions) {
  const auto& c = GetParam();
  const auto json = object(c.json);
  const auto option = QVKTicketFieldOption::initWithDictionary(json);
  EXPECT_EQ(option.fieldOptionId, raw(c.fieldOptionId));
  EXPECT_EQ(option.name, raw(c.name));
  EXPECT_EQ(option.value, raw(c.value));
  EXPECT_EQ(option.isDefaultValue, c.isDefaultValue);
  const auto system = QVKTicketFieldSystemOption::initWithDictionary(json);
  EXPECT_EQ(system.name, raw(c.name));
  EXPECT_EQ(system.value, raw(c.value));
}

INSTANTIATE_TEST_SUITE_P(
    Records, TicketFieldOptionTest,
    ::testing::Values(
        OptionCase{"Complete", R"({"id": 7, "name": "Red", "value": "red", "default": true})", "7",
                   R"("Red")", R"("red")", true},
        OptionCase{"NullsStayNull", R"({"id": null, "name": null, "value": null, "default": null})",
                   "null", "null", "null", false},
        OptionCase{"WrongKinds", R"({"id": "x", "name": 1, "value": [], "default": 1})", R"("x")",
                   "1", "[]", true},
        OptionCase{"MissingDefaultIsFalse", "{}", nullptr, nullptr, nullptr, false}),
    [](const auto& param) { return std::string(param.param.label); });

struct FormCase {
  const char* label;
  const char* json;
  const char* formId;
  const char* name;
  const char* displayName;
  const char* ticketFieldsIds;
};

class TicketFormTest : public ::testing::TestWithParam<FormCase> {};

TEST_P(TicketFormTest, TakesEveryValueAsItStands) {
  const auto& c = GetParam();
  const auto form = QVKTicketForm::createWithDictionary(object(c.json));
  ASSERT_TRUE(form);
  EXPECT_EQ(form->formId, raw(c.formId));
  EXPECT_EQ(form->name, raw(c.name));
  EXPECT_EQ(form->displayName, raw(c.displayName));
  EXPECT_EQ(form->ticketFieldsIds, raw(c.ticketFieldsIds));
  EXPECT_TRUE(form->ticketFields.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Records, TicketFormTest,
    ::testing::Values(
        FormCase{"Complete",
                 R"({"id": 5, "name": "Default", "display_name": "Contact us",
                     "ticket_field_ids": [3, 1, 2], "ticket_fields": [{"id": 1}]})",
                 "5", R"("Default")", R"("Contact us")", "[3, 1, 2]"},
        FormCase{"NullsStayNull",
                 R"({"id": null, "name": null, "display_name": null, "ticket_field_ids": null})",
                 "null", "null", "null", "null"},
        FormCase{"MissingKeysStayEmpty", "{}", nullptr, nullptr, nullptr, nullptr},
        FormCase{"WrongKinds",
                 R"({"id": "5", "name": [], "display_name": 2.5, "ticket_field_ids": {"a": 1}})",
                 R"("5")", "[]", "2.5", R"({"a": 1})"}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(TicketFormTest, ValuesOutliveTheParseArena) {
  QVKTicketForm form;
  {
    unsigned char block[256];
    boost::json::monotonic_resource arena(block, sizeof block);
    const auto json = boost::json::parse(
        R"({"name": "A name long enough to leave the small buffer", "ticket_field_ids": [1, 2]})",
        &arena);
    form = QVKTicketForm::initWithDictionary(json.as_object());
  }
  EXPECT_EQ(RawJson::string(form.name), "A name long enough to leave the small buffer");
  ASSERT_NE(RawJson::array(form.ticketFieldsIds), nullptr);
  EXPECT_EQ(RawJson::array(form.ticketFieldsIds)->size(), 2u);
}

struct NumberCase {
  const char* a;
  const char* b;
  bool equal;
};

class NumericEqualityTest : public ::testing::TestWithParam<NumberCase> {};

TEST_P(NumericEqualityTest, ComparesNumbersByValue) {
  const auto a = boost::json::parse(GetParam().a);
  const auto b = boost::json::parse(GetParam().b);
  EXPECT_EQ(RawJson::numericallyEqual(a, b), GetParam().equal);
  EXPECT_EQ(RawJson::numericallyEqual(b, a), GetParam().equal);
}

INSTANTIATE_TEST_SUITE_P(
    Ids, NumericEqualityTest,
    ::testing::Values(NumberCase{"1", "1", true}, NumberCase{"1", "1.0", true},
                      NumberCase{"-0.0", "0", true}, NumberCase{"1", "1.5", false},
                      NumberCase{"-1", "18446744073709551615", false},
                      // 2^63 as an unsigned integer and as a double.
                      NumberCase{"9223372036854775808", "9223372036854775808.0", true},
                      // 2^63 - 1 is not the double 2^63 it rounds to.
                      NumberCase{"9223372036854775807", "9223372036854775808.0", false},
                      NumberCase{"1", "\"1\"", false}, NumberCase{"1", "true", false},
                      NumberCase{"null", "null", false}));

TEST(RawJsonTest, Int64OnlyForExactIntegers) {
  EXPECT_EQ(RawJson::int64(raw("7")), 7);
  EXPECT_EQ(RawJson::int64(raw("7.0")), 7);
  EXPECT_EQ(RawJson::int64(raw("-9223372036854775808")), std::numeric_limits<std::int64_t>::min());
  for (const char* other : {"7.5", "1e300", "9223372036854775808", "\"7\"", "null"}) {
    EXPECT_FALSE(RawJson::int64(raw(other))) << other;
  }
  EXPECT_FALSE(RawJson::int64(raw(nullptr)));
}

}  // namespace
}  // namespace velmaro
