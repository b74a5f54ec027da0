// Ticket-form utilities: id limit, parsing and joining fields to forms, the
// pattern cleaner, the quantifier test and the pattern check.
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/ticketforms/raw_json.h"
#include "velmaro/ticketforms/ticket_field_pattern_cache.h"

namespace velmaro {
namespace {

using quorvel::platform::Range;
using U = QVKTicketFormUtilities;

boost::json::object object(std::string_view json) {
  return boost::json::parse(json).as_object();
}

TEST(TicketFormUtilitiesTest, IdsAreCutToFiveWhateverTheMaximum) {
  const std::vector<std::int64_t> seven{1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(U::limitTicketFormIds(seven, 10), (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(U::limitTicketFormIds(seven, 5), (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(U::limitTicketFormIds({9, 8, 7}, 1), (std::vector<std::int64_t>{9, 8, 7}));
  EXPECT_EQ(U::limitTicketFormIds({1, 2, 3, 4, 5}, 0), (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
  EXPECT_TRUE(U::limitTicketFormIds({}, 5).empty());
}

// A show_many answer: forms and, separately, their fields.
constexpr const char* kShowMany = R"({
  "ticket_forms": [
    {"id": 10, "name": "Default", "ticket_field_ids": [3, 99, 1, 2.0]},
    {"id": 11, "name": "Returns", "ticket_field_ids": [2, 3, 3]},
    {"id": 12, "name": "Broken", "ticket_field_ids": null},
    {"id": 13, "name": "Odd ids", "ticket_field_ids": ["1", null, {"id": 1}, 1.5]}
  ],
  "ticket_fields": [
    {"id": 1, "title": "Subject", "type": "subject"},
    {"id": 2, "title": "Description", "type": "description"},
    {"id": 3, "title": "Order", "type": "integer"},
    {"id": 3, "title": "Order again", "type": "text"}
  ]
})";

std::vector<std::string> titles(const QVKTicketForm& form) {
  std::vector<std::string> out;
  for (const auto& field : form.ticketFields)
    out.emplace_back(RawJson::string(field.title).value_or("?"));
  return out;
}

TEST(TicketFormUtilitiesTest, FieldsJoinInTheOrderOfTheFormsIds) {
  const auto json = object(kShowMany);
  auto forms = U::parseArrayFromDictionary<QVKTicketForm>(json, "ticket_forms");
  const auto fields = U::parseArrayFromDictionary<QVKTicketField>(json, "ticket_fields");
  ASSERT_EQ(forms.size(), 4u);
  ASSERT_EQ(fields.size(), 4u);
  U::mergeTicketFields(fields, forms);
  // 99 names no field and is skipped; 2.0 is the field 2; the first field
  // with an id wins, and an id named twice gives the field twice.
  EXPECT_EQ(titles(forms[0]), (std::vector<std::string>{"Order", "Subject", "Description"}));
  EXPECT_EQ(titles(forms[1]), (std::vector<std::string>{"Description", "Order", "Order"}));
  EXPECT_TRUE(forms[2].ticketFields.empty());
  EXPECT_TRUE(forms[3].ticketFields.empty());

  // Filling again replaces what was there.
  U::fillTicketFields({}, forms[0]);
  EXPECT_TRUE(forms[0].ticketFields.empty());
}

TEST(TicketFormUtilitiesTest, ParsingAMissingOrWrongKeyGivesNothing) {
  const auto json = object(R"({"ticket_forms": {"id": 1}, "ticket_fields": null})");
  EXPECT_TRUE(U::parseArrayFromDictionary<QVKTicketForm>(json, "ticket_forms").empty());
  EXPECT_TRUE(U::parseArrayFromDictionary<QVKTicketField>(json, "ticket_fields").empty());
  EXPECT_TRUE(U::parseArrayFromDictionary<QVKTicketField>(json, "missing").empty());
}

TEST(TicketFormUtilitiesTest, FieldsAreFoundByNumericId) {
  const auto fields = U::parseArrayFromDictionary<QVKTicketField>(
      object(R"({"ticket_fields": [{"id": "5"}, {"id": null}, {}, {"id": 5.0, "title": "five"},
                                   {"id": 5, "title": "later"}]})"),
      "ticket_fields");
  const auto* five = U::ticketFieldWithId(5, fields);
  ASSERT_NE(five, nullptr);
  EXPECT_EQ(RawJson::string(five->title), "five");
  EXPECT_EQ(U::ticketFieldWithId(boost::json::value(std::uint64_t{5}), fields), five);
  EXPECT_EQ(U::ticketFieldWithId(6, fields), nullptr);
  EXPECT_EQ(U::ticketFieldWithId(boost::json::value("5"), fields), nullptr);
  EXPECT_EQ(U::ticketFieldWithId(boost::json::value(nullptr), fields), nullptr);
}

struct CleanCase {
  const char* label;
  const char* pattern;
  const char* cleaned;
};

class CleanRegexTest : public ::testing::TestWithParam<CleanCase> {};

TEST_P(CleanRegexTest, EscapesBracesThatAreNotCounts) {
  EXPECT_EQ(U::cleanRegex(std::string_view(GetParam().pattern)), GetParam().cleaned);
}

INSTANTIATE_TEST_SUITE_P(
    Cleaner, CleanRegexTest,
    ::testing::Values(CleanCase{"Empty", "", ""},
                      CleanCase{"NoBraces", R"(^[a-z]+\d*$)", R"(^[a-z]+\d*$)"},
                      CleanCase{"CountLeftAlone", R"(\d{3,5})", R"(\d{3,5})"},
                      CleanCase{"EveryCountForm", R"(a{2}b{3,}c{1,4})", R"(a{2}b{3,}c{1,4})"},
                      CleanCase{"LettersEscaped", "{abc}", R"(\{abc\})"},
                      CleanCase{"UnclosedOpeningEscaped", "a{", R"(a\{)"},
                      CleanCase{"UnclosedAfterCount", "a{2}{", R"(a{2}\{)"},
                      // A closing brace without an opening one pairs with position 0: the
                      // first character is escaped too.
                      CleanCase{"ClosingAlonePairsWithTheStart", "ab}", R"(\ab\})"},
                      CleanCase{"ClosingAloneAtTheStart", "}", R"(\})"},
                      // The stray brace's partner is "x{3}}" from 0, which is no count: "x"
                      // gets a backslash (and ICU would then read "\x{3}" as a hex escape).
                      CleanCase{"StrayClosingAfterCount", "x{3}}", R"(\x{3}\})"},
                      // From 0 the text starts with a count, which is enough: nothing escaped.
                      CleanCase{"StrayClosingAfterLeadingCount", "{3}}", "{3}}"},
                      CleanCase{"NestedCountInsideLetters", "{{3}}", R"(\{{3}\})"},
                      // Characters beyond 8 bits pass through unchanged; positions are
                      // UTF-16 units, so "é" and "日本" are one unit each and the emoji two.
                      CleanCase{"WideCharactersKept", "é{x}日本{2}", R"(é\{x\}日本{2})"},
                      CleanCase{"SurrogatePairAtTheStart", "😀}", "\\😀\\}"}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(CleanRegexTest, Utf16FormWorksByUnit) {
  EXPECT_EQ(U::cleanRegex(std::u16string_view(u"\u0100{a}\uFFFF")), u"\u0100\\{a\\}\uFFFF");
  // An unpaired surrogate stays a unit of its own.
  EXPECT_EQ(U::cleanRegex(std::u16string_view(u"\xD800}")), u"\\\xD800\\}");
}

struct QuantifierCase {
  const char* label;
  const char* pattern;
  Range range;
  bool quantifier;
};

class QuantifierPatternTest : public ::testing::TestWithParam<QuantifierCase> {};

TEST_P(QuantifierPatternTest, CountsAreBracedDigits) {
  EXPECT_EQ(U::isQuantifierPattern(std::string_view(GetParam().pattern), GetParam().range),
            GetParam().quantifier);
}

INSTANTIATE_TEST_SUITE_P(
    Quantifier, QuantifierPatternTest,
    ::testing::Values(QuantifierCase{"Exactly", "{3}", Range::whole(), true},
                      QuantifierCase{"AtLeast", "{3,}", Range::whole(), true},
                      QuantifierCase{"Between", "{3,10}", Range::whole(), true},
                      QuantifierCase{"Empty", "{}", Range::whole(), false},
                      QuantifierCase{"LeadingComma", "{,3}", Range::whole(), false},
                      QuantifierCase{"Letter", "{a}", Range::whole(), false},
                      QuantifierCase{"BlankFirst", "{ 3}", Range::whole(), false},
                      QuantifierCase{"AnchoredAtTheRangeStart", "x{3}", Range{0, 4}, false},
                      QuantifierCase{"InsideTheRange", "x{3}", Range{1, 3}, true},
                      QuantifierCase{"NeedNotReachTheEnd", "{3}x}", Range{0, 5}, true},
                      QuantifierCase{"ClosingBraceOutsideTheRange", "{3}", Range{0, 2}, false},
                      QuantifierCase{"RangeOutsideThePattern", "{3}", Range{2, 5}, false},
                      QuantifierCase{"Utf16Positions", "日{3}", Range{1, 3}, true}),
    [](const auto& param) { return std::string(param.param.label); });

struct CheckCase {
  const char* label;
  const char* text;
  const char* pattern;
  bool matches;
};

class CheckStringTest : public ::testing::TestWithParam<CheckCase> {};

TEST_P(CheckStringTest, MatchesAnchoredAtTheStart) {
  EXPECT_EQ(U::checkString(GetParam().text, std::string_view(GetParam().pattern)),
            GetParam().matches);
  // The second check answers from the compiled pattern alike.
  EXPECT_EQ(U::checkString(GetParam().text, std::string_view(GetParam().pattern)),
            GetParam().matches);
}

INSTANTIATE_TEST_SUITE_P(
    Check, CheckStringTest,
    ::testing::Values(CheckCase{"Count", "12345", R"(\d{3,5})", true},
                      CheckCase{"TooShort", "12", R"(^\d{3,5}$)", false},
                      CheckCase{"NeedNotReachTheEnd", "123abc", R"(\d+)", true},
                      CheckCase{"MustStartAtTheStart", "abc123", R"(\d+)", false},
                      CheckCase{"EscapedBracesAreLiteral", "{abc}", "{abc}", true},
                      CheckCase{"DotMatchesNewline", "a\nb", "a.b$", true},
                      CheckCase{"EmptyPatternPassesAll", "anything", "", true},
                      CheckCase{"Utf8Text", "日本語", "日本", true},
                      CheckCase{"DoesNotCompile", "(abc", "(abc", false}),
    [](const auto& param) { return std::string(param.param.label); });

TEST(CheckStringTest, APatternThatIsNotTextIsNoPattern) {
  const auto fields = U::parseArrayFromDictionary<QVKTicketField>(
      object(R"({"ticket_fields": [{"regexp_for_validation": null}, {},
                                   {"regexp_for_validation": 5},
                                   {"regexp_for_validation": "^\\d+$"}]})"),
      "ticket_fields");
  ASSERT_EQ(fields.size(), 4u);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(U::checkString("text", fields[i])) << i;
  EXPECT_FALSE(U::checkString("text", fields[3]));
  EXPECT_TRUE(U::checkString("42", fields[3]));
}

TEST(CheckStringTest, EachPatternCompilesOnceEvenWhenItFails) {
  TicketFieldPatternCache::resetForTesting();
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(U::checkString("x", std::string_view("(unclosed")));
    EXPECT_TRUE(U::checkString("x1", std::string_view(R"(x\d)")));
  }
  EXPECT_EQ(TicketFieldPatternCache::compilations(), 2u);
}

TEST(CheckStringTest, PatternCacheIsBounded) {
  TicketFieldPatternCache::resetForTesting();
  const auto count = TicketFieldPatternCache::kCountLimit + 10;
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_TRUE(U::checkString("p" + std::to_string(i), "p" + std::to_string(i)));
  }
  EXPECT_EQ(TicketFieldPatternCache::compilations(), count);
  // The first patterns were let go: checking one compiles it again; a recent
  // one is still there.
  EXPECT_TRUE(U::checkString("p" + std::to_string(count - 1), "p" + std::to_string(count - 1)));
  EXPECT_EQ(TicketFieldPatternCache::compilations(), count);
  EXPECT_TRUE(U::checkString("p0", std::string_view("p0")));
  EXPECT_EQ(TicketFieldPatternCache::compilations(), count + 1);
}

TEST(CheckStringTest, HostilePatternAnswersFalseWithinTheLimit) {
  // Catastrophic backtracking: without the engine's limit this input would
  // take about 2^64 steps.
  const std::string text = std::string(64, 'a') + "!";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(U::checkString(text, std::string_view("(a+)+$")));
  const auto elapsed = std::chrono::steady_clock::now() - start;
  // 250 ms of engine steps; the margin is for sanitizer builds.
  EXPECT_LT(elapsed, std::chrono::seconds(10));
  EXPECT_TRUE(U::checkString("aaa", std::string_view("(a+)+$")));
}

}  // namespace
}  // namespace velmaro
