#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/help_center_provider_fixture.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST_F(HelpCenterProviderTest, CategoriesSectionsAndSingleRecordsWithTheirNotifications) {
  auto categories = call<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithCallback(std::move(cb)); });
  ASSERT_EQ(categories->size(), 1u);
  ASSERT_TRUE((*categories)[0].result) << (*categories)[0].error->debugDescription();
  EXPECT_EQ((*categories)[0].result->size(), 3u);
  EXPECT_EQ((*categories)[0].result->front().identifier, kFirstCategory);
  // The locale comes from the settings (en-us), fetched before the list.
  EXPECT_EQ(lastTarget("/categories.json"),
            "/api/v2/help_center/en-us/categories.json?per_page=100");

  auto sections = call<QVKHelpCenterSection>(
      [&](auto cb) { provider_->getSectionsWithCategoryId(kFirstCategory, "de", std::move(cb)); });
  ASSERT_TRUE((*sections)[0].result);
  ASSERT_FALSE((*sections)[0].result->empty());
  for (const auto& s : *(*sections)[0].result) EXPECT_EQ(s.category_id, kFirstCategory);
  EXPECT_EQ(lastTarget("/sections.json"),
            "/api/v2/help_center/de/categories/360000010001/sections.json?per_page=100");

  auto section = call<QVKHelpCenterSection>(
      [&](auto cb) { provider_->getSectionWithId(kFirstSection, std::move(cb)); });
  ASSERT_TRUE((*section)[0].result);
  ASSERT_EQ((*section)[0].result->size(), 1u);
  EXPECT_EQ((*section)[0].result->front().identifier, kFirstSection);

  auto category = call<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoryWithId(kFirstCategory + 1, "en-us", std::move(cb)); });
  ASSERT_TRUE((*category)[0].result);
  ASSERT_EQ((*category)[0].result->size(), 1u);
  EXPECT_EQ((*category)[0].result->front().identifier, kFirstCategory + 1);
  EXPECT_EQ(lastTarget("/categories/360000010002"),
            "/api/v2/help_center/en-us/categories/360000010002.json");

  settle();
  EXPECT_THAT(
      notificationNames(),
      ElementsAre("QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated", "QV_HC_SectionsStarting",
                  "QV_HC_SectionsUpdated", "QV_HC_SectionByIdStarting", "QV_HC_SectionByIdSuccess",
                  "QV_HC_CategoryByIdStarting", "QV_HC_CategoryByIdSuccess"));
  for (const auto& n : notifications_) EXPECT_TRUE(n.userInfo.empty()) << n.name;
}

TEST_F(HelpCenterProviderTest, ALocaleOverrideIsUsedWithoutFetchingSettings) {
  Support::instance()->setHelpCenterLocaleOverride("de");
  auto answers = call<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithCallback(std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_EQ((*answers)[0].result->front().locale, "de");
  EXPECT_THAT(recorder_->matching("/settings/"), IsEmpty());
  EXPECT_EQ(lastTarget("/categories.json"), "/api/v2/help_center/de/categories.json?per_page=100");
}

TEST_F(HelpCenterProviderTest, ArticleListsSendTheirLabelsAsTheServiceExpects) {
  auto bySection = call<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->getArticlesWithSectionId(kFirstSection, std::move(cb)); });
  ASSERT_TRUE((*bySection)[0].result);
  EXPECT_FALSE((*bySection)[0].result->empty());
  // No labels: label_names is still sent, with an empty value.
  EXPECT_EQ(lastTarget("/sections/360000020001/articles.json"),
            "/api/v2/help_center/en-us/sections/360000020001/articles.json?per_page=100&"
            "include=users&respect_sanitization_settings=true&label_names=");

  // The section path is percent-encoded as a whole, so a blank in a label is fine.
  call<QVKHelpCenterArticle>([&](auto cb) {
    provider_->getArticlesWithSectionId(kFirstSection, std::vector<std::string>{"faq", "two words"},
                                        "en-us", std::move(cb));
  });
  EXPECT_THAT(lastTarget("/sections/360000020001/articles.json"),
              EndsWith("&label_names=faq,two%20words"));

  auto byLabels = call<QVKHelpCenterArticle>([&](auto cb) {
    provider_->getArticlesByLabels(std::vector<std::string>{"billing", "faq"}, std::move(cb));
  });
  ASSERT_TRUE((*byLabels)[0].result);
  EXPECT_FALSE((*byLabels)[0].result->empty());
  EXPECT_EQ(lastTarget("/en-us/articles.json?include=categories"),
            "/api/v2/help_center/en-us/articles.json?include=categories,sections,users&"
            "label_names=billing,faq&sort_by=created_at&sort_order=desc&"
            "respect_sanitization_settings=true&per_page=100");
  // Breadcrumbs come with the side-loaded sections and categories.
  EXPECT_FALSE((*byLabels)[0].result->front().articleParents.value_or("").empty());

  // The labels path is not escaped: a blank makes no URL and nothing is sent.
  recorder_->clear();
  auto unescaped = call<QVKHelpCenterArticle>([&](auto cb) {
    provider_->getArticlesByLabels(std::vector<std::string>{"two words"}, "en-us", std::move(cb));
  });
  ASSERT_TRUE((*unescaped)[0].error);
  EXPECT_FALSE((*unescaped)[0].result);
  EXPECT_THAT(recorder_->matching("label_names"), IsEmpty());

  auto flat = call<QVKHelpCenterFlatArticle>(
      [&](auto cb) { provider_->getFlatArticlesWithCallback(std::move(cb)); });
  ASSERT_TRUE((*flat)[0].result);
  EXPECT_EQ((*flat)[0].result->size(), 42u);
  EXPECT_THAT(lastTarget("include=sections,categories,users&sort_by"),
              EndsWith("sort_order=desc&per_page=100&page=1"));
  call<QVKHelpCenterFlatArticle>(
      [&](auto cb) { provider_->getFlatArticles(QVKListArticleQuery(5, 3), std::move(cb)); });
  EXPECT_THAT(lastTarget("include=sections,categories,users&sort_by"),
              EndsWith("per_page=5&page=3"));

  settle();
  const auto names = notificationNames();
  ASSERT_EQ(names.size(), 12u);
  const std::vector<std::string> rest{names.begin() + 6, names.begin() + 8};
  EXPECT_THAT(rest, ElementsAre("QV_HC_ArticlesStarting", "QV_HC_RequestError"));
  const auto error = errorOf(notifications_[7]);
  ASSERT_TRUE(error);
  EXPECT_EQ(*error, *(*unescaped)[0].error);
}

TEST_F(HelpCenterProviderTest, ValidationFailuresAnswerLaterAndSendNothing) {
  auto answers = std::make_shared<Answers<std::vector<QVKHelpCenterArticle>>>();
  provider_->getArticlesByLabels(std::nullopt, "en-us", collect<QVKHelpCenterArticle>(answers));
  provider_->searchForArticlesUsingQuery(std::string(), "en-us",
                                         collect<QVKHelpCenterArticle>(answers));
  // Never inside the call, not even for a refusal.
  EXPECT_EQ(answers->size(), 0u);
  ASSERT_TRUE(pumpUntil([&] { return answers->size() == 2; }));
  for (const auto& a : answers->list) {
    EXPECT_FALSE(a.result);
    ASSERT_TRUE(a.error);
    EXPECT_EQ(a.error->domain, QVKValidator::kErrorDomain);
  }
  EXPECT_EQ((*answers)[0].error->code, QVKValidator::kNull);
  EXPECT_EQ((*answers)[1].error->code, QVKValidator::kEmptyString);

  // Without a callback an article is not even requested, so no view is recorded.
  provider_->getArticleWithId(kFirstArticle, "en-us", nullptr);
  settle();
  EXPECT_THAT(recorder_->seen(), IsEmpty());
  EXPECT_THAT(notifications_, IsEmpty());
  EXPECT_THAT(articleViews(), IsEmpty());
}

TEST_F(HelpCenterProviderTest, SearchesEscapeTheQueryAndAccumulateSideLoads) {
  auto search = std::make_shared<QVKHelpCenterSearch>();
  search->query = "password";
  auto first = call<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->searchArticles(search, std::move(cb)); });
  ASSERT_TRUE((*first)[0].result);
  EXPECT_FALSE((*first)[0].result->empty());
  call<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->searchArticles(search, "en-us", std::move(cb)); });
  // The caller's object gains the side-loads on every call.
  EXPECT_EQ(search->sideLoads->size(), 6u);
  const auto searches = recorder_->matching("/articles/search.json");
  ASSERT_EQ(searches.size(), 2u);
  EXPECT_THAT(searches[0].target, HasSubstr("include=users,categories,sections&"));
  EXPECT_THAT(searches[1].target,
              HasSubstr("include=users,categories,sections,users,categories,sections"));
  EXPECT_THAT(searches[1].target,
              EndsWith("&origin=mobile_sdk&respect_sanitization_settings=true"));
  const auto last = QVKHelpCenterSessionCache::getLastSearch();
  ASSERT_TRUE(last);
  EXPECT_EQ(last->query(), "password");
  EXPECT_EQ(last->results_count(), static_cast<std::int64_t>((*first)[0].result->size()));

  // "&" and "/" stay, a blank is escaped.
  recorder_->clear();
  call<QVKHelpCenterArticle>([&](auto cb) {
    provider_->searchForArticlesUsingQuery(std::string("Q&A / billing"), "de", std::move(cb));
  });
  EXPECT_EQ(lastTarget("search.json"),
            "/api/v2/help_center/articles/search.json?query=Q&A%20/%20billing&"
            "include=sections,categories,users&per_page=100&locale=de&origin=mobile_sdk&"
            "respect_sanitization_settings=true");

  // With labels the given locale is ignored: the settings' one is used.
  auto labelled = call<QVKHelpCenterArticle>([&](auto cb) {
    provider_->searchForArticlesUsingQuery(
        std::string("invoice"), std::vector<std::string>{"billing"}, "de", std::move(cb));
  });
  ASSERT_TRUE((*labelled)[0].result);
  EXPECT_EQ(lastTarget("query=invoice"),
            "/api/v2/help_center/articles/search.json?query=invoice&"
            "include=sections,categories,users&per_page=100&label_names=billing&locale=en-us&"
            "origin=mobile_sdk&respect_sanitization_settings=true");
  EXPECT_EQ(QVKHelpCenterSessionCache::getLastSearch()->query(), "invoice");

  settle();
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_SearchStarting", "QV_HC_SearchSuccess", "QV_HC_SearchStarting",
                          "QV_HC_SearchSuccess", "QV_HC_SearchStarting", "QV_HC_SearchSuccess",
                          "QV_HC_SearchStarting", "QV_HC_SearchSuccess"));

  // The search object's query is reported as a usage event.
  ASSERT_TRUE(pumpUntil([&] {
    return boost::json::serialize(controlJson("blips")).find("password") != std::string::npos;
  }));
}

TEST_F(HelpCenterProviderTest, AnArticleByIdRecordsOneViewCarryingTheLastSearch) {
  auto search = std::make_shared<QVKHelpCenterSearch>();
  search->query = "account";
  call<QVKHelpCenterArticle>([&](auto cb) { provider_->searchArticles(search, std::move(cb)); });

  auto article = call<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->getArticleWithId(kFirstArticle, std::move(cb)); });
  ASSERT_TRUE((*article)[0].result);
  ASSERT_EQ((*article)[0].result->size(), 1u);
  const auto& record = (*article)[0].result->front();
  EXPECT_EQ(record.identifier, kFirstArticle);
  EXPECT_TRUE(record.author_name.has_value());  // from the side-loaded users
  EXPECT_FALSE(record.articleParents.has_value());
  EXPECT_EQ(lastTarget("/hc/api/mobile/"),
            "/hc/api/mobile/en-us/articles/360000030001.json?include=users&"
            "respect_sanitization_settings=true");
  // The first click is spent when the answer to its view comes back, which
  // may be after the service has counted the view.
  ASSERT_TRUE(pumpUntil([&] {
    return articleViews().size() == 1 && !QVKHelpCenterSessionCache::uniqueSearchResultClick();
  }));

  // The second view of the search session is no longer its first click.
  call<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->getArticleWithId(kFirstArticle, std::move(cb)); });
  ASSERT_TRUE(pumpUntil([&] { return articleViews().size() == 2; }));
  settle();
  const auto views = articleViews();
  ASSERT_EQ(views.size(), 2u);
  const auto& body = views[0].as_object().at("body").as_object();
  EXPECT_EQ(body.at("last_search").as_object().at("query"), "account");
  EXPECT_EQ(body.at("last_search").as_object().at("origin"), "mobile_sdk");
  EXPECT_EQ(body.at("unique_search_result_click"), true);
  EXPECT_EQ(views[1].as_object().at("body").as_object().at("unique_search_result_click"), false);
  EXPECT_EQ(views[0].as_object().at("article_id"), kFirstArticle);
  EXPECT_THAT(recorder_->matching("/stats/view.json")[0].target,
              "/api/v2/help_center/en-us/articles/360000030001/stats/view.json");

  const auto names = notificationNames();
  EXPECT_THAT(std::vector<std::string>(names.begin() + 2, names.end()),
              ElementsAre("QV_HC_ArticleByIdStarting", "QV_HC_ArticleByIdSuccess",
                          "QV_HC_ArticleByIdStarting", "QV_HC_ArticleByIdSuccess"));
}

TEST_F(HelpCenterProviderTest, SuggestionsAttachmentsAndTheOverview) {
  auto deflection = std::make_shared<QVKHelpCenterDeflection>();
  deflection->query = "password";
  auto suggestions = call<QVKHelpCenterSimpleArticle>(
      [&](auto cb) { provider_->getArticleSuggestions(deflection, std::move(cb)); });
  ASSERT_TRUE((*suggestions)[0].result);
  EXPECT_FALSE((*suggestions)[0].result->empty());
  EXPECT_THAT(lastTarget("deflect.json"),
              StartsWith("/api/mobile/help_center/search/deflect.json?"));
  EXPECT_THAT(lastTarget("deflect.json"), EndsWith("&respect_sanitization_settings=true"));

  auto attachments = call<QVKHelpCenterAttachment>(
      [&](auto cb) { provider_->getAttachmentWithArticleId(kFirstArticle + 16, std::move(cb)); });
  ASSERT_TRUE((*attachments)[0].result);
  EXPECT_EQ((*attachments)[0].result->size(), 2u);
  EXPECT_EQ(lastTarget("attachments"),
            "/api/v2/help_center/en-us/articles/360000030017/attachments/block.json&per_page=100");

  auto tree = std::make_shared<Answers<HelpCenterCategoryViewModelContainer::Categories>>();
  provider_->getHelpCenterOverviewWithHelpCenterOverviewModel(
      QVKHelpCenterOverviewContentModel::defaultContent(), [tree](auto categories, auto error) {
        tree->list.push_back({categories, error});
      });
  ASSERT_TRUE(pumpUntil([&] { return tree->size() == 1; }));
  ASSERT_TRUE((*tree)[0].result) << (*tree)[0].error->debugDescription();
  EXPECT_EQ((*tree)[0].result->size(), 3u);
  EXPECT_THAT(lastTarget("article_tree.json"),
              StartsWith("/hc/api/mobile/en-us/article_tree.json?"));

  settle();
  // The overview announces nothing.
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchSuccess",
                          "QV_HC_AttachmentsStarting", "QV_HC_AttachmentsUpdated"));
}

TEST_F(HelpCenterProviderTest, VotesAndTheirRemoval) {
  const std::string article = std::to_string(kFirstArticle + 3);
  auto up = call<QVKHelpCenterArticleVote>(
      [&](auto cb) { provider_->upVoteArticleWithId(article, std::move(cb)); });
  settle();
  ASSERT_EQ(up->size(), 1u);
  ASSERT_TRUE((*up)[0].result) << (*up)[0].error->debugDescription();
  ASSERT_EQ((*up)[0].result->size(), 1u);
  const auto& vote = (*up)[0].result->front();
  EXPECT_EQ(vote.value, "1");
  EXPECT_EQ(recorder_->matching("/up.json").at(0).method, "POST");

  auto down = call<QVKHelpCenterArticleVote>(
      [&](auto cb) { provider_->downVoteArticleWithId(article, std::move(cb)); });
  ASSERT_TRUE((*down)[0].result);
  EXPECT_EQ((*down)[0].result->front().value, "-1");

  auto removed = std::make_shared<Answers<QVKDispatcherResponse>>();
  provider_->removeVoteWithId(std::to_string((*down)[0].result->front().identifier.value_or(0)),
                              [removed](auto response, auto error) {
                                removed->list.push_back({response, error});
                              });
  ASSERT_TRUE(pumpUntil([&] { return removed->size() == 1; }));
  ASSERT_TRUE((*removed)[0].result);
  EXPECT_EQ((*removed)[0].result->response->statusCode(), 204);
  EXPECT_EQ(recorder_->matching("/votes/").at(0).method, "DELETE");

  settle();
  EXPECT_THAT(
      notificationNames(),
      ElementsAre("QV_HC_UpvoteStarting", "QV_HC_UpvoteSuccess", "QV_HC_DownvoteStarting",
                  "QV_HC_DownvoteSuccess", "QV_HC_VoteDeleteStarting", "QV_HC_VoteDeleteSuccess"));
  // Each vote is reported as a usage event.
  ASSERT_TRUE(pumpUntil([&] {
    const auto blips = boost::json::serialize(controlJson("blips"));
    return blips.find(article) != std::string::npos;
  }));
}

TEST_F(HelpCenterProviderTest, WithVotingDisabledAVoteIsAnsweredTwice) {
  stopCore();
  emulator_->control("PUT", "settings", R"({"voting":false})");
  startCore();
  auto up = call<QVKHelpCenterArticleVote>(
      [&](auto cb) {
        provider_->upVoteArticleWithId(std::to_string(kFirstArticle), std::move(cb));
      },
      2);
  ASSERT_EQ(up->size(), 2u);
  ASSERT_TRUE((*up)[0].error);
  EXPECT_EQ((*up)[0].error->domain, "com.quorvel.support");
  EXPECT_EQ((*up)[0].error->code, 2001);
  EXPECT_EQ((*up)[0].error->localizedDescription(),
            "Help Center Article Voting is disabled, can't execute network request");
  // ...and the vote still went out and was answered.
  ASSERT_TRUE((*up)[1].result);
  EXPECT_EQ((*up)[1].result->front().value, "1");
  EXPECT_EQ(recorder_->matching("/up.json").size(), 1u);
  settle();
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_UpvoteStarting", "QV_HC_UpvoteSuccess"));
}

TEST_F(HelpCenterProviderTest, AProviderDestroyedWithACallInFlightStillAnswers) {
  auto answers = std::make_shared<Answers<std::vector<QVKHelpCenterCategory>>>();
  const void* sender = provider_.get();
  provider_->getCategoriesWithLocale("en-us", collect<QVKHelpCenterCategory>(answers));
  provider_.reset();
  ASSERT_TRUE(pumpUntil([&] { return answers->size() == 1; }));
  EXPECT_TRUE((*answers)[0].result);
  settle();
  EXPECT_THAT(notificationNames(sender),
              ElementsAre("QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"));
}

}  // namespace
}  // namespace velmaro::testing
