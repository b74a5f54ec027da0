// The overview's article tree: strict decoding, derived values and edits.
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/platform/device_info.h"
#include "velmaro/helpcenter/help_center_category_view_model_container.h"
#include "velmaro/util/qvk_localization.h"

namespace velmaro {
namespace {

constexpr const char* kTree = R"({
  "category_count": 1,
  "categories": [{
    "id": 4021, "name": "General", "section_count": 2,
    "sections": [
      {"id": 7, "category_id": 4021, "name": "FAQ", "article_count": 12,
       "articles": [{"id": 99, "section_id": 7, "name": "Reset"}]},
      {"id": -8, "category_id": 4021, "name": "Billing", "article_count": 0, "articles": []}
    ]
  }]
})";

class ArticleTreeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    quorvel::platform::DeviceInfo::setOverride(
        quorvel::platform::DeviceFacts{"test", "x86_64", {"en-US"}});
    QVKLocalization::resetForTesting();
  }
  void TearDown() override {
    quorvel::platform::DeviceInfo::setOverride(std::nullopt);
    QVKLocalization::resetForTesting();
  }
};

TEST_F(ArticleTreeTest, ParsesTheTreeWithIdsAsText) {
  auto parsed = HelpCenterCategoryViewModelContainer::parse(kTree);
  ASSERT_TRUE(parsed.ok()) << parsed.error().localizedDescription();
  ASSERT_EQ(parsed->size(), 1u);
  const auto& category = *parsed->front();
  EXPECT_EQ(category.id(), "4021");
  EXPECT_EQ(category.name(), "General");
  EXPECT_EQ(category.section_count(), 2);
  ASSERT_EQ(category.sections().size(), 2u);
  const auto& faq = category.sections()[0];
  EXPECT_EQ(faq.id(), "7");
  EXPECT_EQ(faq.category_id(), "4021");
  EXPECT_EQ(faq.article_count(), 12);
  EXPECT_EQ(faq.detailTitle(), "See all 12 articles");
  ASSERT_EQ(faq.articles().size(), 1u);
  EXPECT_EQ(faq.articles()[0].id(), "99");
  EXPECT_EQ(faq.articles()[0].section_id(), "7");
  EXPECT_EQ(faq.articles()[0].name(), "Reset");
  EXPECT_EQ(category.sections()[1].id(), "-8");
}

TEST_F(ArticleTreeTest, SeeAllCaptionFollowsThePreferredLanguage) {
  quorvel::platform::DeviceInfo::setOverride(
      quorvel::platform::DeviceFacts{"test", "x86_64", {"de-DE"}});
  auto parsed = HelpCenterCategoryViewModelContainer::parse(kTree);
  ASSERT_TRUE(parsed.ok());
  EXPECT_EQ(parsed->front()->sections()[0].detailTitle(), "Alle 12 Artikel anzeigen");
}

// Each edit breaks one required key or type; the whole document must fail.
struct BrokenCase {
  const char* label;
  const char* pointer;  // the object to edit
  const char* key;
  const char* replacement;  // JSON, or nullptr to remove the key
};

class ArticleTreeRequiredKeysTest : public ::testing::TestWithParam<BrokenCase> {};

TEST_P(ArticleTreeRequiredKeysTest, FailsTheWholeDocument) {
  auto document = boost::json::parse(kTree);
  auto& target = document.at_pointer(GetParam().pointer).as_object();
  if (GetParam().replacement == nullptr) {
    target.erase(GetParam().key);
  } else {
    target[GetParam().key] = boost::json::parse(GetParam().replacement);
  }
  const auto parsed = HelpCenterCategoryViewModelContainer::parse(boost::json::serialize(document));
  EXPECT_FALSE(parsed.ok());
}

INSTANTIATE_TEST_SUITE_P(
    Keys, ArticleTreeRequiredKeysTest,
    ::testing::Values(
        BrokenCase{"categoryCount", "", "category_count", nullptr},
        BrokenCase{"categories", "", "categories", nullptr},
        BrokenCase{"categoryId", "/categories/0", "id", nullptr},
        BrokenCase{"categoryIdAsText", "/categories/0", "id", R"("4021")"},
        BrokenCase{"sectionCount", "/categories/0", "section_count", nullptr},
        BrokenCase{"articleCount", "/categories/0/sections/0", "article_count", nullptr},
        BrokenCase{"sectionArticles", "/categories/0/sections/0", "articles", nullptr},
        BrokenCase{"sectionName", "/categories/0/sections/1", "name", "null"},
        BrokenCase{"articleSectionId", "/categories/0/sections/0/articles/0", "section_id",
                   nullptr},
        BrokenCase{"articleName", "/categories/0/sections/0/articles/0", "name", "5"}),
    [](const auto& p) { return std::string(p.param.label); });

TEST_F(ArticleTreeTest, MalformedBytesFail) {
  EXPECT_FALSE(HelpCenterCategoryViewModelContainer::parse("{\"category_count\":").ok());
  EXPECT_FALSE(HelpCenterCategoryViewModelContainer::parse("[]").ok());
}

TEST_F(ArticleTreeTest, UpdateReplacesTheFirstSectionWithTheSameId) {
  auto parsed = HelpCenterCategoryViewModelContainer::parse(kTree);
  ASSERT_TRUE(parsed.ok());
  auto category = parsed->front();
  const auto faq = category->sections()[0];

  QVKHelpCenterArticle article;
  article.identifier = 100;
  article.section_id = 7;
  article.title = "More";
  const auto more = HelpCenterArticleViewModel::convert({article});
  const auto longer = faq.sectionByReplacing(more);
  EXPECT_EQ(longer.article_count(), 12);
  EXPECT_EQ(faq.articles().size(), 1u);  // the original is unchanged
  EXPECT_EQ(longer, faq);                // same id, so the same section

  auto& updated = category->update(longer);
  EXPECT_EQ(&updated, category.get());
  ASSERT_EQ(category->sections().size(), 2u);
  EXPECT_EQ(category->sections()[0].articles()[0].id(), "100");
  EXPECT_EQ(category->sections()[1].id(), "-8");

  // A section of another id changes nothing; an empty article list keeps the count.
  auto strangerTree = boost::json::parse(kTree);
  strangerTree.at_pointer("/categories/0/sections/0/id") = 70;
  auto stranger = HelpCenterCategoryViewModelContainer::parse(boost::json::serialize(strangerTree));
  ASSERT_TRUE(stranger.ok());
  const auto emptied = stranger->front()->sections()[0].sectionByReplacing({});
  EXPECT_EQ(emptied.article_count(), 12);
  EXPECT_TRUE(emptied.articles().empty());
  category->update(emptied);
  EXPECT_EQ(category->sections()[0].articles().size(), 1u);
  EXPECT_FALSE(emptied == faq);
}

TEST(ArticleViewModelTest, ConvertKeepsOrderAndIdsAsText) {
  std::vector<QVKHelpCenterArticle> articles(2);
  articles[0].identifier = 360001;
  articles[0].section_id = 2;
  articles[0].title = "One";
  articles[1].identifier = 5;
  articles[1].section_id = 2;
  articles[1].title = "Two";
  const auto models = HelpCenterArticleViewModel::convert(articles);
  ASSERT_EQ(models.size(), 2u);
  EXPECT_EQ(models[0].id(), "360001");
  EXPECT_EQ(models[1].name(), "Two");
}

TEST(ArticleViewModelDeathTest, AnArticleWithoutIdStopsTheProcess) {
  std::vector<QVKHelpCenterArticle> articles(1);
  articles[0].section_id = 2;
  articles[0].title = "No id";
  EXPECT_DEATH(HelpCenterArticleViewModel::convert(articles), "");
}

}  // namespace
}  // namespace velmaro
