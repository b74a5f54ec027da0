#include <string>

#include <gtest/gtest.h>

#include "emulator/emulator_test_support.h"
#include "emulator/sample_data.h"

namespace qvk::emulator::testing {
namespace {

namespace json = boost::json;

const std::string kArticle = std::to_string(SampleData::kFirstArticleId);
const std::string kSection = std::to_string(SampleData::kFirstSectionId);
const std::string kCategory = std::to_string(SampleData::kFirstCategoryId);

// The plain lists (categories, sections, section articles, articles by labels,
// first pages, search, suggestions, attachments, the whole tree) are read with
// their exact paths by the library's tests in tests/; these are the filters,
// scopes, pages and errors behind them.
class HelpCenterReads : public EmulatorTest, public ::testing::WithParamInterface<RouteCase> {};

TEST_P(HelpCenterReads, AnswerTheServicesShapes) {
  const auto& c = GetParam();
  auto a = get(c.path);
  ASSERT_EQ(a.status, c.status) << a.body;
  expectChecks(a, c.checks);
  if (c.status == 200) {
    EXPECT_EQ(a.header("X-QV-Cache-Control"), "must-revalidate, max-age=60");
    EXPECT_FALSE(a.header("ETag").empty());
  }
}

const std::string kSearch = "/api/v2/help_center/articles/search.json?query=";
const std::string kTree = "/hc/api/mobile/en-us/article_tree.json?";
const std::vector<Check> kNotFound{is("/error", "RecordNotFound"), is("/description", "Not found")};

INSTANTIATE_TEST_SUITE_P(
    Endpoints, HelpCenterReads,
    ::testing::Values(
        RouteCase{"category in the second locale",
                  "/api/v2/help_center/de/categories/" + kCategory + ".json",
                  200,
                  {is("/category/name", "Erste Schritte"), is("/category/locale", "de")}},
        RouteCase{"section",
                  "/api/v2/help_center/en-us/sections/" + kSection + ".json",
                  200,
                  {is("/section/id", SampleData::kFirstSectionId)}},
        RouteCase{"section articles, label filter",
                  "/api/v2/help_center/en-us/sections/" + kSection +
                      "/articles.json?per_page=100&include=users&label_names=security,mobile",
                  200,
                  {sized("/articles", 3)}},
        RouteCase{"flat articles, last page",
                  "/api/v2/help_center/en-us/articles.json?include=sections,categories,users&"
                  "sort_by=created_at&sort_order=desc&per_page=10&page=5",
                  200,
                  {sized("/articles", 2)}},
        RouteCase{"search matches entity titles",
                  kSearch + "q%26a&locale=en-us&per_page=100",
                  200,
                  {sized("/results", 7)}},
        RouteCase{
            "search second locale", kSearch + "zahlung&locale=de", 200, {sized("/results", 2)}},
        // Each side-loaded record once, though the list names it twice.
        RouteCase{"search pages and repeated includes",
                  kSearch + "billing&include=users,categories,sections,users,categories,"
                            "sections&locale=en-us&per_page=1&page=1&origin=mobile_sdk",
                  200,
                  {sized("/results", 1), is("/count", 2), kindAt("/next_page", json::kind::string),
                   sized("/categories", 1), sized("/sections", 1)}},
        RouteCase{"search escaped query in its category",
                  kSearch + "credit%20card&locale=en-us&category=" +
                      std::to_string(SampleData::kFirstCategoryId + 1) + "&section=",
                  200,
                  {sized("/results", 1), is("/results/0/title", "Update your credit card")}},
        RouteCase{"search escaped query in another category",
                  kSearch + "credit%20card&locale=en-us&category=" + kCategory,
                  200,
                  {is("/count", 0)}},
        RouteCase{
            "tree by section, paged",
            kTree + "section_ids=" + kSection + "&per_page=2",
            200,
            {is("/category_count", 1), is("/categories/0/sections/0/article_count", 7),
             sized("/categories/0/sections/0/articles", 2),
             is("/categories/0/sections/0/articles/0/section_id", SampleData::kFirstSectionId)}},
        RouteCase{"tree by category and label",
                  kTree + "category_ids=" + kCategory + "&article_labels=security&per_page=1000",
                  200,
                  {is("/categories/0/section_count", 1),
                   is("/categories/0/sections/0/article_count", 2)}},
        RouteCase{"unknown locale", "/api/v2/help_center/xx-yy/categories.json", 404, kNotFound},
        RouteCase{"unknown article", "/hc/api/mobile/en-us/articles/1.json", 404, kNotFound},
        RouteCase{"unknown section", "/api/v2/help_center/en-us/sections/1.json", 404, kNotFound}),
    CaseName());

using HelpCenter = EmulatorTest;

// Up, down and removing a vote through the library are in tests/; here the
// totals, one vote per user, and whose vote may be removed.
TEST_F(HelpCenter, VotesMoveTheArticlesTotalsOnePerUser) {
  const std::string article = "/hc/api/mobile/en-us/articles/" + kArticle + ".json";
  const std::string vote = "/api/v2/help_center/articles/" + kArticle;
  auto demo = demoToken();
  auto other = anonymousToken("guid-votes");
  EXPECT_EQ(post(vote + "/up.json", "").status, 401);
  auto up = post(vote + "/up.json", "", demo);
  ASSERT_EQ(up.status, 201) << up.body;
  expectChecks(up, {is("/vote/value", 1), is("/vote/item_type", "Article")});
  EXPECT_EQ(post(vote + "/down.json", "", demo).status, 200);  // replaces the user's vote
  EXPECT_EQ(post(vote + "/down.json", "", other).status, 201);
  expectChecks(get(article), {is("/article/vote_sum", -2), is("/article/vote_count", 2)});

  auto removal = "/api/v2/help_center/votes/" + std::to_string(at(up.json, "/vote/id").as_int64());
  EXPECT_EQ(del(removal + ".json", other).status, 404);  // not theirs
  EXPECT_EQ(del(removal + ".json", demo).status, 204);
  expectChecks(get(article), {is("/article/vote_sum", -1), is("/article/vote_count", 1)});
}

// The library's tests check the body of a view after a search.
TEST_F(HelpCenter, ArticleViewsAreRecordedForKnownArticlesOnly) {
  EXPECT_EQ(post("/api/v2/help_center/en-us/articles/" + kArticle + "/stats/view.json", "").status,
            200);
  EXPECT_EQ(post("/api/v2/help_center/en-us/articles/1/stats/view.json", "").status, 404);
  auto views = get("/_emulator/article_views");
  ASSERT_EQ(sizeOf(at(views.json, "/article_views")), 1u);
  EXPECT_TRUE(at(views.json, "/article_views/0/body").is_null());
}

TEST_F(HelpCenter, AttachmentContentIsServedAtContentUrl) {
  auto list = get("/api/v2/help_center/en-us/articles/" + kArticle + "/attachments.json");
  std::size_t images = 0;
  for (const auto& a : at(list.json, "/article_attachments").as_array()) {
    std::string url(a.at("content_url").as_string());
    auto path = url.substr(url.find("/hc/"));
    auto content = get(path);
    EXPECT_EQ(content.status, 200);
    EXPECT_EQ(static_cast<std::int64_t>(content.body.size()), a.at("size").as_int64());
    if (a.at("inline").as_bool()) ++images;
  }
  EXPECT_EQ(images, 1u);  // the screenshot in the body; block.json lists only the download
}

TEST_F(HelpCenter, MatchingEntityTagAnswersNotModified) {
  const std::string path = "/api/v2/help_center/en-us/sections/" + kSection + ".json";
  auto first = get(path);
  auto tag = first.header("ETag");
  ASSERT_FALSE(tag.empty());
  auto second = get(path, {}, {{"If-None-Match", tag}});
  EXPECT_EQ(second.status, 304);
  EXPECT_TRUE(second.body.empty());
  EXPECT_EQ(get(path, {}, {{"If-None-Match", "\"other\""}}).status, 200);
  // The connection stays usable after a 304.
  EXPECT_EQ(get(path).status, 200);
}

class RestrictedHelpCenter : public EmulatorTest {
  void tune(EmulatorOptions& o) override { o.helpCenterRestricted = true; }
};

TEST_F(RestrictedHelpCenter, ReadsNeedAJwtUser) {
  const std::string path = "/api/v2/help_center/en-us/categories.json";
  EXPECT_EQ(get(path).status, 401);
  EXPECT_EQ(get(path, anonymousToken("guid-restricted")).status, 401);
  EXPECT_EQ(get(path, demoToken()).status, 200);
  // Settings stay public.
  EXPECT_EQ(get("/api/mobile/sdk/settings/app.json").status, 200);
}

}  // namespace
}  // namespace qvk::emulator::testing
