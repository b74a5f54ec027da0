#include "tools/qvk/query_builder.h"

#include <gtest/gtest.h>

namespace qvk {
namespace {

using Strings = std::vector<std::string>;
using Ids = std::vector<std::int64_t>;

TEST(QueryBuilder, SearchLeavesWhatWasNotGivenAtTheObjectsOwnValues) {
  auto search = QueryBuilder::search({.query = "pay"});
  EXPECT_EQ(search.query, "pay");
  EXPECT_EQ(search.labelNames, Strings{});  // the object's own initial value
  EXPECT_FALSE(search.categoryIds);
  EXPECT_FALSE(search.sectionIds);
  EXPECT_FALSE(search.page);
  EXPECT_FALSE(search.resultsPerPage);
  EXPECT_FALSE(search.locale);
}

using Model = velmaro::QVKHelpCenterOverviewContentModel;

struct OverviewCase {
  const char* name;
  HcArguments arguments;
  std::uint64_t groupType;
  std::optional<Ids> groupIds;
};

class QueryBuilderOverview : public ::testing::TestWithParam<OverviewCase> {};

TEST_P(QueryBuilderOverview, GroupsBySectionsOrCategories) {
  auto model = QueryBuilder::overview(GetParam().arguments);
  EXPECT_EQ(model.groupType, GetParam().groupType);
  EXPECT_EQ(model.groupIds, GetParam().groupIds);
  EXPECT_EQ(model.labels, GetParam().arguments.labels);
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, QueryBuilderOverview,
    ::testing::Values(
        OverviewCase{"WholeHelpCenter", {}, Model::kGroupTypeDefault, std::nullopt},
        OverviewCase{"Sections", {.sectionIds = Ids{1, 2}}, Model::kGroupTypeSection, Ids{1, 2}},
        OverviewCase{"CategoriesAndLabels",
                     {.labels = Strings{"x", "y"}, .categoryIds = Ids{3}},
                     Model::kGroupTypeCategory,
                     Ids{3}}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

struct FlatCase {
  const char* name;
  HcArguments arguments;
  // {page, per page}; nothing for the convenience form.
  std::optional<std::pair<std::int64_t, std::int64_t>> paging;
};

class QueryBuilderFlat : public ::testing::TestWithParam<FlatCase> {};

TEST_P(QueryBuilderFlat, FillsTheMissingPagingAtItsDefault) {
  auto query = QueryBuilder::listArticles(GetParam().arguments);
  ASSERT_EQ(query.has_value(), GetParam().paging.has_value());
  if (!query) return;
  EXPECT_EQ(std::pair(query->page(), query->perPage()), *GetParam().paging);
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, QueryBuilderFlat,
    ::testing::Values(FlatCase{"Neither", {}, std::nullopt},
                      FlatCase{"Page", {.page = 3}, std::pair(3, QueryBuilder::kDefaultPerPage)},
                      FlatCase{"PerPage", {.perPage = 7}, std::pair(QueryBuilder::kDefaultPage, 7)},
                      FlatCase{"Both", {.page = 2, .perPage = 5}, std::pair(2, 5)}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

}  // namespace
}  // namespace qvk
