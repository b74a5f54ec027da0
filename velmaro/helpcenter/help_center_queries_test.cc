// Query strings of searches, suggestions and the overview, and the search session.
#include <functional>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/helpcenter/qvk_help_center_deflection.h"
#include "velmaro/helpcenter/qvk_help_center_last_search.h"
#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"
#include "velmaro/helpcenter/qvk_help_center_search.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/helpcenter/qvk_list_article_query.h"

namespace velmaro {
namespace {

struct SearchCase {
  const char* label;
  std::function<void(QVKHelpCenterSearch&)> setUp;
  const char* expected;
};

class SearchQueryTest : public ::testing::TestWithParam<SearchCase> {};

TEST_P(SearchQueryTest, QueryString) {
  QVKHelpCenterSearch search;
  GetParam().setUp(search);
  EXPECT_EQ(search.queryStringWithLocale("en-us"), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, SearchQueryTest,
    ::testing::Values(
        SearchCase{"queryOnly", [](auto& s) { s.query = "pay"; }, "?query=pay&locale=en-us"},
        SearchCase{"nothingSet", [](auto&) {}, "?locale=en-us"},
        SearchCase{"labelsFirstWithoutQuery",
                   [](auto& s) {
                     s.labelNames = std::vector<std::string>{"x", "y"};
                   },
                   "?label_names=x,y&locale=en-us"},
        SearchCase{"ownLocaleWins", [](auto& s) { s.locale = "de"; }, "?locale=de"},
        SearchCase{"everything",
                   [](auto& s) {
                     s.query = "pay";
                     s.labelNames = std::vector<std::string>{"l1"};
                     s.sideLoads = std::vector<std::string>{"users", "sections"};
                     s.page = 2;
                     s.resultsPerPage = 25;
                     s.categoryIds = std::vector<std::int64_t>{1, 2};
                     s.sectionIds = std::vector<std::int64_t>{3};
                   },
                   "?query=pay&label_names=l1&include=users,sections&locale=en-us&page=2&per_page="
                   "25&category=1,2&section=3"},
        SearchCase{"emptyCategoryListStillWritten",
                   [](auto& s) { s.categoryIds = std::vector<std::int64_t>{}; },
                   "?locale=en-us&category="},
        SearchCase{"emptyLabelsAreLeftOut",
                   [](auto& s) {
                     s.labelNames = std::vector<std::string>{};
                     s.sideLoads = std::nullopt;
                   },
                   "?locale=en-us"},
        SearchCase{"spaceEscaped", [](auto& s) { s.query = "a b"; }, "?query=a%20b&locale=en-us"},
        SearchCase{"reservedKept", [](auto& s) { s.query = "a&b=c/d?"; },
                   "?query=a&b=c/d?&locale=en-us"},
        SearchCase{"nonAsciiEscaped", [](auto& s) { s.query = "caf\u00e9"; },
                   "?query=caf%C3%A9&locale=en-us"}),
    [](const auto& p) { return std::string(p.param.label); });

TEST(SearchQueryTest, ContentScopeCopiesLabelsAndGroups) {
  QVKHelpCenterOverviewContentModel content;
  content.groupType = QVKHelpCenterOverviewContentModel::kGroupTypeCategory;
  content.groupIds = std::vector<std::int64_t>{7, 8};
  content.labels = std::vector<std::string>{"faq"};
  QVKHelpCenterSearch search;
  search.addSearchContentScope(content);
  EXPECT_EQ(search.labelNames, (std::vector<std::string>{"faq"}));
  EXPECT_EQ(search.categoryIds, (std::vector<std::int64_t>{7, 8}));
  EXPECT_FALSE(search.sectionIds);

  content.groupType = 9;  // restricts nothing
  QVKHelpCenterSearch other;
  other.addSearchContentScope(content);
  EXPECT_FALSE(other.categoryIds);
  EXPECT_FALSE(other.sectionIds);
}

TEST(DeflectionQueryTest, SingleIdsAndQueryEncoding) {
  QVKHelpCenterDeflection deflection;
  deflection.query = "a b#c";
  deflection.categoryId = 4;
  deflection.sectionId = 5;
  deflection.sideLoads = std::vector<std::string>{"users"};
  EXPECT_EQ(deflection.queryStringWithLocale("fr"),
            "?query=a%20b%23c&include=users&locale=fr&category=4&section=5");
  QVKHelpCenterDeflection bare;
  EXPECT_EQ(bare.queryStringWithLocale("fr"), "?locale=fr");
}

using Ids = std::vector<std::int64_t>;
using Labels = std::vector<std::string>;

struct OverviewCase {
  std::uint64_t groupType;
  std::optional<std::vector<std::int64_t>> ids;
  std::optional<std::vector<std::string>> labels;
  const char* expected;
};

class OverviewQueryTest : public ::testing::TestWithParam<OverviewCase> {};

TEST_P(OverviewQueryTest, FormQueryString) {
  QVKHelpCenterOverviewContentModel model;
  model.groupType = GetParam().groupType;
  model.groupIds = GetParam().ids;
  model.labels = GetParam().labels;
  EXPECT_EQ(model.formQueryString(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Groups, OverviewQueryTest,
    ::testing::Values(OverviewCase{0, std::nullopt, std::nullopt, "?per_page=1000"},
                      OverviewCase{2, Ids{1, 2}, Labels{"x", "y"},
                                   "?category_ids=1,2&article_labels=x,y&per_page=1000"},
                      OverviewCase{1, Ids{3}, std::nullopt, "?section_ids=3&per_page=1000"},
                      OverviewCase{0, Ids{3}, Labels{"a b"}, "?article_labels=a%20b&per_page=1000"},
                      OverviewCase{5, Ids{3}, Labels{}, "?per_page=1000"}));

TEST(OverviewQueryTest, DefaultContent) {
  const auto model = QVKHelpCenterOverviewContentModel::defaultContent();
  EXPECT_EQ(model.groupType, 0u);
  EXPECT_EQ(model.initialNumberOfArticles, 5);
  EXPECT_EQ(model.formQueryString(), "?per_page=1000");
  EXPECT_FALSE(QVKHelpCenterOverviewContentModel{}.initialNumberOfArticles);
}

TEST(ListArticleQueryTest, PerPageComesFirst) {
  const auto query = QVKListArticleQuery::initWithPerPage(100, 1);
  EXPECT_EQ(query.perPage(), 100);
  EXPECT_EQ(query.page(), 1);
  static_assert(!std::is_default_constructible_v<QVKListArticleQuery>);
}

class SessionCacheTest : public ::testing::Test {
 protected:
  void SetUp() override { QVKHelpCenterSessionCache::resetForTesting(); }
  void TearDown() override { QVKHelpCenterSessionCache::resetForTesting(); }
};

TEST_F(SessionCacheTest, LastSearchNeedsQueryAndCount) {
  EXPECT_FALSE(QVKHelpCenterLastSearch::initWithQuery(std::nullopt, 3));
  EXPECT_FALSE(QVKHelpCenterLastSearch::initWithQuery("pay", std::nullopt));
  const auto search = QVKHelpCenterLastSearch::initWithQuery("pay", 3);
  ASSERT_TRUE(search);
  EXPECT_EQ(boost::json::value(search->toJson()),
            boost::json::parse(R"({"query":"pay","results_count":3,"origin":"mobile_sdk"})"));
  EXPECT_EQ(boost::json::value_from(*search), boost::json::value(search->toJson()));
}

TEST_F(SessionCacheTest, ClickFlagAcrossSearchesAndViews) {
  EXPECT_FALSE(QVKHelpCenterSessionCache::recordArticleViewRequestJson());
  QVKHelpCenterSessionCache::cacheLastSearch(std::nullopt);  // changes nothing
  EXPECT_FALSE(QVKHelpCenterSessionCache::getLastSearch());

  QVKHelpCenterSessionCache::cacheLastSearch(QVKHelpCenterLastSearch::initWithQuery("pay", 2));
  const auto firstView = QVKHelpCenterSessionCache::recordArticleViewRequestJson();
  ASSERT_TRUE(firstView);
  EXPECT_EQ(firstView->at("unique_search_result_click"), true);
  EXPECT_EQ(firstView->at("last_search").at("query"), "pay");

  // The view succeeded: later views report the same search, no longer as the first click.
  QVKHelpCenterSessionCache::unsetUniqueSearchResultClick();
  const auto secondView = QVKHelpCenterSessionCache::recordArticleViewRequestJson();
  ASSERT_TRUE(secondView);
  EXPECT_EQ(secondView->at("unique_search_result_click"), false);
  EXPECT_EQ(secondView->at("last_search").at("query"), "pay");

  // Another search sets the flag again and replaces the search.
  QVKHelpCenterSessionCache::cacheLastSearch(QVKHelpCenterLastSearch::initWithQuery("ship", 0));
  const auto thirdView = QVKHelpCenterSessionCache::recordArticleViewRequestJson();
  ASSERT_TRUE(thirdView);
  EXPECT_EQ(thirdView->at("unique_search_result_click"), true);
  EXPECT_EQ(thirdView->at("last_search").at("query"), "ship");
}

}  // namespace
}  // namespace velmaro
