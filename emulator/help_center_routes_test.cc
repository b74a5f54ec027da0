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

struct ReadCase {
  const char* name;
  std::string path;
  int status;
  const char* key;       // answer key that must be there
  std::size_t listSize;  // size of the list under key (when it is one)
};

class HelpCenterReads : public EmulatorTest, public ::testing::WithParamInterface<ReadCase> {};

TEST_P(HelpCenterReads, AnswersWithTheServicesKeys) {
  const auto& c = GetParam();
  auto a = get(c.path);
  ASSERT_EQ(a.status, c.status) << c.path << "\n" << a.body;
  ASSERT_TRUE(a.has(c.key)) << a.body.substr(0, 300);
  if (a.object().at(c.key).is_array()) {
    EXPECT_EQ(sizeOf(a.object().at(c.key)), c.listSize) << c.path;
  }
  if (c.status == 200) {
    EXPECT_EQ(a.header("X-QV-Cache-Control"), "must-revalidate, max-age=60");
    EXPECT_FALSE(a.header("ETag").empty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Endpoints, HelpCenterReads,
    ::testing::Values(
        ReadCase{"categories", "/api/v2/help_center/en-us/categories.json?per_page=100", 200,
                 "categories", 3},
        ReadCase{
            "sections",
            "/api/v2/help_center/en-us/categories/" + kCategory + "/sections.json?per_page=100",
            200, "sections", 2},
        ReadCase{"category", "/api/v2/help_center/de/categories/" + kCategory + ".json", 200,
                 "category", 0},
        ReadCase{"section", "/api/v2/help_center/en-us/sections/" + kSection + ".json", 200,
                 "section", 0},
        ReadCase{"section articles, empty labels",
                 "/api/v2/help_center/en-us/sections/" + kSection +
                     "/articles.json?per_page=100&include=users&respect_sanitization_settings="
                     "true&label_names=",
                 200, "articles", 7},
        ReadCase{"section articles, label filter",
                 "/api/v2/help_center/en-us/sections/" + kSection +
                     "/articles.json?per_page=100&include=users&label_names=security,mobile",
                 200, "articles", 3},
        ReadCase{"articles by labels",
                 "/api/v2/help_center/en-us/articles.json?include=categories,sections,users&"
                 "label_names=refund&sort_by=created_at&sort_order=desc&"
                 "respect_sanitization_settings=true&per_page=100",
                 200, "articles", 2},
        ReadCase{"flat articles page 2",
                 "/api/v2/help_center/en-us/articles.json?include=sections,categories,users&"
                 "sort_by=created_at&sort_order=desc&per_page=10&page=5",
                 200, "articles", 2},
        ReadCase{"article by id",
                 "/hc/api/mobile/en-us/articles/" + kArticle +
                     ".json?include=users&respect_sanitization_settings=true",
                 200, "users", 1},
        ReadCase{"attachments with the ampersand path",
                 "/api/v2/help_center/en-us/articles/" + kArticle +
                     "/attachments/block.json&per_page=100",
                 200, "article_attachments", 1},
        ReadCase{"search by query and labels",
                 "/api/v2/help_center/articles/search.json?query=payment&include=sections,"
                 "categories,users&per_page=100&label_names=faq&locale=en-us&origin=mobile_sdk&"
                 "respect_sanitization_settings=true",
                 200, "results", 1},
        ReadCase{"search matches entity titles",
                 "/api/v2/help_center/articles/search.json?query=q%26a&locale=en-us&per_page=100",
                 200, "results", 7},
        ReadCase{"search second locale",
                 "/api/v2/help_center/articles/search.json?query=zahlung&locale=de", 200, "results",
                 2},
        ReadCase{"deflection",
                 "/api/mobile/help_center/search/deflect.json?query=invoice&locale="
                 "en-us&respect_sanitization_settings=true",
                 200, "results", 1},
        ReadCase{"tree", "/hc/api/mobile/en-us/article_tree.json?per_page=1000", 200, "categories",
                 3},
        ReadCase{"unknown locale", "/api/v2/help_center/xx-yy/categories.json", 404, "error", 0},
        ReadCase{"unknown article", "/hc/api/mobile/en-us/articles/1.json", 404, "error", 0},
        ReadCase{"unknown section", "/api/v2/help_center/en-us/sections/1.json", 404, "error", 0}),
    CaseName());

using HelpCenter = EmulatorTest;

TEST_F(HelpCenter, NotFoundHasTheServicesErrorBody) {
  auto a = get("/hc/api/mobile/en-us/articles/1.json");
  EXPECT_EQ(a.body, R"({"error":"RecordNotFound","description":"Not found"})");
}

TEST_F(HelpCenter, SecondLocaleHasItsOwnTexts) {
  auto en = get("/api/v2/help_center/en-us/categories/" + kCategory + ".json");
  auto de = get("/api/v2/help_center/de/categories/" + kCategory + ".json");
  EXPECT_EQ(at(en.json, "category", "name"), "Getting Started");
  EXPECT_EQ(at(de.json, "category", "name"), "Erste Schritte");
  EXPECT_EQ(at(de.json, "category", "locale"), "de");
}

TEST_F(HelpCenter, SearchHonoursIncludeListsRepeatedAndCountsResults) {
  auto a = get(
      "/api/v2/help_center/articles/search.json?query=billing&include=users,categories,sections,"
      "users,categories,sections&locale=en-us&per_page=1&page=1&origin=mobile_sdk");
  ASSERT_EQ(a.status, 200);
  EXPECT_EQ(sizeOf(at(a.json, "results")), 1u);
  EXPECT_EQ(at(a.json, "count"), 2);
  EXPECT_TRUE(at(a.json, "next_page").is_string());
  // Each side-loaded record once, though the list names it twice.
  EXPECT_EQ(sizeOf(at(a.json, "categories")), 1u);
  EXPECT_EQ(sizeOf(at(a.json, "sections")), 1u);
}

TEST_F(HelpCenter, SearchWithAnEscapedQueryAndScopes) {
  auto a =
      get("/api/v2/help_center/articles/search.json?query=credit%20card&locale=en-us&"
          "category=" +
          std::to_string(SampleData::kFirstCategoryId + 1) + "&section=");
  ASSERT_EQ(a.status, 200);
  ASSERT_EQ(sizeOf(at(a.json, "results")), 1u);
  EXPECT_EQ(at(a.json, "results", 0, "title"), "Update your credit card");
  auto none =
      get("/api/v2/help_center/articles/search.json?query=credit%20card&locale=en-us&"
          "category=" +
          kCategory);
  EXPECT_EQ(at(none.json, "count"), 0);
}

TEST_F(HelpCenter, TreeHonoursFiltersAndPerPage) {
  auto bySection =
      get("/hc/api/mobile/en-us/article_tree.json?section_ids=" + kSection + "&per_page=2");
  ASSERT_EQ(bySection.status, 200);
  EXPECT_EQ(at(bySection.json, "category_count"), 1);
  const auto& section = at(bySection.json, "categories", 0, "sections", 0);
  EXPECT_EQ(at(section, "article_count"), 7);
  EXPECT_EQ(sizeOf(at(section, "articles")), 2u);
  EXPECT_TRUE(at(section, "articles", 0, "section_id").is_int64());

  auto byCategory = get("/hc/api/mobile/en-us/article_tree.json?category_ids=" + kCategory +
                        "&article_labels=security&per_page=1000");
  const auto& only = at(byCategory.json, "categories", 0);
  EXPECT_EQ(at(only, "section_count"), 1);
  EXPECT_EQ(at(only, "sections", 0, "article_count"), 2);
}

TEST_F(HelpCenter, VotesMoveTheArticlesTotalsOnePerUser) {
  const std::string path = "/hc/api/mobile/en-us/articles/" + kArticle + ".json";
  auto demo = demoToken();
  auto other = anonymousToken("guid-votes");
  EXPECT_EQ(post("/api/v2/help_center/articles/" + kArticle + "/up.json", "").status, 401);

  auto up = post("/api/v2/help_center/articles/" + kArticle + "/up.json", "", demo);
  ASSERT_EQ(up.status, 201) << up.body;
  EXPECT_EQ(at(up.json, "vote", "value"), 1);
  EXPECT_EQ(at(up.json, "vote", "item_type"), "Article");
  auto again = post("/api/v2/help_center/articles/" + kArticle + "/down.json", "", demo);
  EXPECT_EQ(again.status, 200);
  post("/api/v2/help_center/articles/" + kArticle + "/down.json", "", other);

  auto article = get(path);
  EXPECT_EQ(at(article.json, "article", "vote_sum"), -2);
  EXPECT_EQ(at(article.json, "article", "vote_count"), 2);

  auto voteId = at(up.json, "vote", "id").as_int64();
  EXPECT_EQ(del("/api/v2/help_center/votes/" + std::to_string(voteId) + ".json", other).status,
            404);  // not theirs
  EXPECT_EQ(del("/api/v2/help_center/votes/" + std::to_string(voteId) + ".json", demo).status, 204);
  article = get(path);
  EXPECT_EQ(at(article.json, "article", "vote_sum"), -1);
  EXPECT_EQ(at(article.json, "article", "vote_count"), 1);
}

TEST_F(HelpCenter, ArticleViewsKeepTheLastSearchBody) {
  const std::string view = "/api/v2/help_center/en-us/articles/" + kArticle + "/stats/view.json";
  EXPECT_EQ(post(view, "").status, 200);
  EXPECT_EQ(post(view, R"({"last_search":{"query":"pay","results_count":3,"origin":"mobile_sdk"},)"
                       R"("unique_search_result_click":true})")
                .status,
            200);
  EXPECT_EQ(post("/api/v2/help_center/en-us/articles/1/stats/view.json", "").status, 404);
  auto views = get("/_emulator/article_views");
  ASSERT_EQ(sizeOf(at(views.json, "article_views")), 2u);
  EXPECT_TRUE(at(views.json, "article_views", 0, "body").is_null());
  EXPECT_EQ(at(views.json, "article_views", 1, "body", "last_search", "query"), "pay");
  EXPECT_EQ(at(views.json, "article_views", 1, "body", "unique_search_result_click"), true);
}

TEST_F(HelpCenter, AttachmentContentIsServedAtContentUrl) {
  auto list = get("/api/v2/help_center/en-us/articles/" + kArticle + "/attachments.json");
  std::size_t images = 0;
  for (const auto& a : at(list.json, "article_attachments").as_array()) {
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
