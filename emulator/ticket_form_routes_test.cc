#include <set>
#include <string>

#include <gtest/gtest.h>

#include "emulator/emulator_test_support.h"
#include "emulator/sample_data.h"

namespace qvk::emulator::testing {
namespace {

using testing::PrintTo;

const std::string kContact = std::to_string(SampleData::kContactFormId);
const std::string kBug = std::to_string(SampleData::kBugFormId);
const std::string kInactive = std::to_string(SampleData::kInactiveFormId);

std::string hundredTimes(const std::string& text) {
  std::string out;
  for (int i = 0; i < 100; ++i) out += text;
  return out;
}

struct FormCase {
  const char* name;
  std::string query;
  int status;
  std::size_t forms;
  std::size_t fields;
};

class TicketForms : public EmulatorTest, public ::testing::WithParamInterface<FormCase> {};

TEST_P(TicketForms, ShowManyAnswers) {
  const auto& c = GetParam();
  auto a = get("/api/v2/ticket_forms/show_many.json" + c.query, demoToken());
  ASSERT_EQ(a.status, c.status) << a.body;
  if (c.status != 200) return;
  EXPECT_EQ(sizeOf(at(a.json, "/ticket_forms")), c.forms);
  EXPECT_EQ(sizeOf(at(a.json, "/ticket_fields")), c.fields);
}

INSTANTIATE_TEST_SUITE_P(
    Queries, TicketForms,
    ::testing::Values(
        FormCase{"both", "?ids=" + kContact + "," + kBug + "&include=ticket_fields&active=true",
                 200, 2, 16},
        FormCase{"one", "?ids=" + kContact + "&include=ticket_fields&active=true", 200, 1, 7},
        FormCase{"inactive_filtered", "?ids=" + kInactive + "&include=ticket_fields&active=true",
                 200, 0, 0},
        FormCase{"inactive_without_filter", "?ids=" + kInactive + "&include=ticket_fields", 200, 1,
                 2},
        FormCase{"same_id_twice", "?ids=" + kContact + "," + kContact, 200, 1, 0},
        FormCase{"ids_past_the_hundredth", "?ids=" + hundredTimes("1,") + kContact, 200, 0, 0},
        FormCase{"unknown_ids", "?ids=1,2&include=ticket_fields&active=true", 200, 0, 0},
        FormCase{"no_ids", "?include=ticket_fields", 400, 0, 0}),
    CaseName());

TEST_F(EmulatorTest, TicketFieldsCoverEveryTypeAndPattern) {
  auto a = get("/api/v2/ticket_forms/show_many.json?ids=" + kContact + "," + kBug +
                   "&include=ticket_fields&active=true",
               demoToken());
  std::set<std::string> types;
  std::set<std::string> patterns;
  for (const auto& f : at(a.json, "/ticket_fields").as_array()) {
    types.emplace(f.at("type").as_string());
    const auto& regexp = f.at("regexp_for_validation");
    if (regexp.is_string()) patterns.emplace(regexp.as_string());
    if (f.at("type") == "tagger" || f.at("type") == "multiselect") {
      EXPECT_GE(sizeOf(f.at("custom_field_options")), 3u);
    }
    if (f.at("type") == "priority") {
      EXPECT_EQ(sizeOf(f.at("system_field_options")), 4u);
    }
  }
  for (const char* t :
       {"subject", "description", "regexp", "textarea", "text", "checkbox", "tagger", "integer",
        "decimal", "date", "partialcreditcard", "priority", "status", "tickettype", "multiselect"})
    EXPECT_TRUE(types.count(t)) << t;
  EXPECT_TRUE(patterns.count(R"(^[A-Z]{3}-\d{4,6}$)"));
  EXPECT_TRUE(patterns.count(R"(^{[A-Z]+}-\d{3}$)"));
  // The form lists its fields in its own order.
  EXPECT_EQ(at(a.json, "/ticket_forms/1/ticket_field_ids/11"), 360000050007);
}

}  // namespace
}  // namespace qvk::emulator::testing
