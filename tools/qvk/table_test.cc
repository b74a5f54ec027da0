#include "tools/qvk/table.h"

#include <sstream>

#include <gtest/gtest.h>

namespace qvk {
namespace {

std::string printed(const Table& table) {
  std::ostringstream out;
  table.print(out);
  return out.str();
}

TEST(Table, AlignsColumnsAndCountsRows) {
  Table table({{"ID", 10, true}, {"NAME", 20}}, "category", "categories");
  table.addRow({"7", "General"});
  table.addRow({"360000010001", "Billing"});
  // The id column is wider than its limit allows, so the id is cut too.
  EXPECT_EQ(printed(table),
            "        ID  NAME\n"
            "         7  General\n"
            "360000010\xE2\x80\xA6  Billing\n"
            "2 categories\n");
}

TEST(Table, RowsMadeWhenPrintedPrintAsAddedRows) {
  const std::vector<std::vector<std::string>> rows = {{"7", "Gen\neral"}, {"360000010001"}};
  Table added({{"ID", 10, true}, {"NAME", 20}}, "category", "categories");
  for (const auto& row : rows) added.addRow(row);
  Table made({{"ID", 10, true}, {"NAME", 20}}, "category", "categories");
  made.setRows(rows.size(), [&](std::size_t i) { return rows[i]; });
  EXPECT_EQ(printed(made), printed(added));
}

TEST(Table, SingularCountAndNoHeaderWhenEmpty) {
  Table one({{"A", 5}}, "vote", "votes");
  one.addRow({"x"});
  EXPECT_EQ(printed(one), "A\nx\n1 vote\n");
  Table none({{"A", 5}}, "vote", "votes");
  EXPECT_EQ(printed(none), "0 votes\n");
}

TEST(Table, CountsCharactersNotBytes) {
  Table table({{"NAME", 20}, {"N", 3}}, "row", "rows");
  table.addRow({"Größe", "1"});
  table.addRow({"Size", "2"});
  EXPECT_EQ(printed(table), "NAME   N\nGröße  1\nSize   2\n2 rows\n");
}

TEST(Table, MissingCellsAreBlankAndLineBreaksFlattened) {
  Table table({{"A", 10}, {"B", 10}}, "row", "rows");
  table.addRow({"x\ny"});
  EXPECT_EQ(printed(table), "A    B\nx y\n1 row\n");
}

struct ControlCase {
  const char* name;
  std::string cell;
  std::string shown;
};

class TableControls : public ::testing::TestWithParam<ControlCase> {};

// Names come from the service: nothing in them may reach the terminal as a control.
TEST_P(TableControls, ReplacesEveryControlCharacter) {
  Table table({{"A", 20}}, "row", "rows");
  table.addRow({GetParam().cell});
  EXPECT_EQ(printed(table), "A\n" + GetParam().shown + "\n1 row\n");
}

INSTANTIATE_TEST_SUITE_P(Cases, TableControls,
                         ::testing::Values(ControlCase{"Escape", "a\x1B[2Jb", "a\xEF\xBF\xBD[2Jb"},
                                           ControlCase{"BellAndDelete", "a\ab\x7F",
                                                       "a\xEF\xBF\xBD"
                                                       "b\xEF\xBF\xBD"},
                                           ControlCase{"Nul", std::string("a\0b", 3),
                                                       "a\xEF\xBF\xBD"
                                                       "b"},
                                           ControlCase{"C1Csi",
                                                       "a\xC2\x9B"
                                                       "2J",
                                                       "a\xEF\xBF\xBD"
                                                       "2J"},
                                           ControlCase{"C1Boundaries", "\xC2\x80\xC2\x9F\xC2\xA0",
                                                       "\xEF\xBF\xBD\xEF\xBF\xBD\xC2\xA0"},
                                           ControlCase{"LineBreaksAndTabs", "a\r\nb\tc", "a  b c"}),
                         [](const auto& testCase) { return std::string(testCase.param.name); });

struct TruncateCase {
  const char* name;
  std::string text;
  std::size_t width;
  std::string expected;
};

class TableTruncate : public ::testing::TestWithParam<TruncateCase> {};

TEST_P(TableTruncate, CutsWithAnEllipsisOnCharacterBoundaries) {
  EXPECT_EQ(Table::truncate(GetParam().text, GetParam().width), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TableTruncate,
    ::testing::Values(TruncateCase{"Shorter", "short", 10, "short"},
                      TruncateCase{"Exactly", "exactly10!", 10, "exactly10!"},
                      TruncateCase{"Longer", "eleven char", 10, "eleven ch\xE2\x80\xA6"},
                      // A trailing blank before the ellipsis is dropped.
                      TruncateCase{"BlankBeforeTheCut", "ab cd", 4, "ab\xE2\x80\xA6"},
                      // Never splits a multi-byte character.
                      TruncateCase{"MultiByte", "äöüäöü", 4, "äöü\xE2\x80\xA6"},
                      TruncateCase{"ZeroWidth", "abc", 0, ""}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

}  // namespace
}  // namespace qvk
