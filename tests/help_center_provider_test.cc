#include <boost/json/serialize.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/help_center_provider_fixture.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/util/qvk_validator.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// What one list call came to, whatever its record type.
struct ListOutcome {
  std::optional<quorvel::platform::Error> error;
  std::size_t items = 0;
};
using Reply = std::function<void(ListOutcome)>;

template <class Record>
QVKHelpCenterCallback<Record> replying(Reply reply) {
  return [reply](std::optional<std::vector<Record>> items, auto error) {
    reply({std::move(error), items ? items->size() : 0});
  };
}

// One list operation against the sample Help Center: the request it sends,
// how many records come back and what it announces.
struct ListCase {
  const char* label;
  std::function<void(QVKHelpCenterProvider&, Reply)> start;
  const char* target;  // exactly as sent
  std::size_t items;
  std::vector<std::string> notifications;
};

void PrintTo(const ListCase& c, std::ostream* os) {
  *os << c.label;
}

class HelpCenterListTest : public HelpCenterProviderTest,
                           public ::testing::WithParamInterface<ListCase> {};

TEST_P(HelpCenterListTest, SendsItsRequestAndAnswersTheRecords) {
  const auto& c = GetParam();
  std::vector<ListOutcome> outcomes;
  c.start(*provider_, [&](ListOutcome outcome) { outcomes.push_back(std::move(outcome)); });
  ASSERT_TRUE(pumpUntil([&] { return !outcomes.empty(); }));
  settle();
  ASSERT_EQ(outcomes.size(), 1u);
  ASSERT_FALSE(outcomes[0].error) << outcomes[0].error->debugDescription();
  EXPECT_EQ(outcomes[0].items, c.items);
  const std::string target = c.target;
  EXPECT_EQ(lastTarget(target.substr(0, target.find('?'))), target);
  EXPECT_THAT(notificationNames(), ElementsAreArray(c.notifications));
  for (const auto& n : notifications_) EXPECT_TRUE(n.userInfo.empty()) << n.name;
}

constexpr std::int64_t kCategory = 360000010001;
constexpr std::int64_t kSection = 360000020001;
constexpr std::int64_t kArticleWithAttachments = 360000030017;

INSTANTIATE_TEST_SUITE_P(
    Operations, HelpCenterListTest,
    ::testing::Values(
        // The convenience forms take the settings' locale (en-us).
        ListCase{"categories",
                 [](auto& p, Reply r) {
                   p.getCategoriesWithCallback(replying<QVKHelpCenterCategory>(r));
                 },
                 "/api/v2/help_center/en-us/categories.json?per_page=100",
                 3,
                 {"QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"}},
        ListCase{"sections",
                 [](auto& p, Reply r) {
                   p.getSectionsWithCategoryId(kCategory, "de", replying<QVKHelpCenterSection>(r));
                 },
                 "/api/v2/help_center/de/categories/360000010001/sections.json?per_page=100",
                 2,
                 {"QV_HC_SectionsStarting", "QV_HC_SectionsUpdated"}},
        ListCase{"sectionById",
                 [](auto& p, Reply r) {
                   p.getSectionWithId(kSection, replying<QVKHelpCenterSection>(r));
                 },
                 "/api/v2/help_center/en-us/sections/360000020001.json",
                 1,
                 {"QV_HC_SectionByIdStarting", "QV_HC_SectionByIdSuccess"}},
        ListCase{"categoryById",
                 [](auto& p, Reply r) {
                   p.getCategoryWithId(kCategory + 1, "en-us", replying<QVKHelpCenterCategory>(r));
                 },
                 "/api/v2/help_center/en-us/categories/360000010002.json",
                 1,
                 {"QV_HC_CategoryByIdStarting", "QV_HC_CategoryByIdSuccess"}},
        // No labels: label_names is still sent, with an empty value.
        ListCase{"sectionArticles",
                 [](auto& p, Reply r) {
                   p.getArticlesWithSectionId(kSection, replying<QVKHelpCenterArticle>(r));
                 },
                 "/api/v2/help_center/en-us/sections/360000020001/articles.json?per_page=100&"
                 "include=users&respect_sanitization_settings=true&label_names=",
                 7,
                 {"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"}},
        // The section path is percent-encoded as a whole, so a blank in a label is fine.
        ListCase{"sectionArticlesWithLabels",
                 [](auto& p, Reply r) {
                   p.getArticlesWithSectionId(kSection,
                                              std::vector<std::string>{"faq", "two words"}, "en-us",
                                              replying<QVKHelpCenterArticle>(r));
                 },
                 "/api/v2/help_center/en-us/sections/360000020001/articles.json?per_page=100&"
                 "include=users&respect_sanitization_settings=true&label_names=faq,two%20words",
                 1,
                 {"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"}},
        ListCase{"articlesByLabels",
                 [](auto& p, Reply r) {
                   p.getArticlesByLabels(std::vector<std::string>{"billing", "faq"},
                                         replying<QVKHelpCenterArticle>(r));
                 },
                 "/api/v2/help_center/en-us/articles.json?include=categories,sections,users&"
                 "label_names=billing,faq&sort_by=created_at&sort_order=desc&"
                 "respect_sanitization_settings=true&per_page=100",
                 19,
                 {"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"}},
        ListCase{"flatFirstPage",
                 [](auto& p, Reply r) {
                   p.getFlatArticlesWithCallback(replying<QVKHelpCenterFlatArticle>(r));
                 },
                 "/api/v2/help_center/en-us/articles.json?include=sections,categories,users&"
                 "sort_by=created_at&sort_order=desc&per_page=100&page=1",
                 42,
                 {"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"}},
        ListCase{"flatPaged",
                 [](auto& p, Reply r) {
                   p.getFlatArticles(QVKListArticleQuery(5, 3),
                                     replying<QVKHelpCenterFlatArticle>(r));
                 },
                 "/api/v2/help_center/en-us/articles.json?include=sections,categories,users&"
                 "sort_by=created_at&sort_order=desc&per_page=5&page=3",
                 5,
                 {"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"}},
        // "&" and "/" stay as they are, a blank is escaped.
        ListCase{"searchByQuery",
                 [](auto& p, Reply r) {
                   p.searchForArticlesUsingQuery(std::string("Q&A / billing"), "de",
                                                 replying<QVKHelpCenterArticle>(r));
                 },
                 "/api/v2/help_center/articles/search.json?query=Q&A%20/%20billing&"
                 "include=sections,categories,users&per_page=100&locale=de&origin=mobile_sdk&"
                 "respect_sanitization_settings=true",
                 0,
                 {"QV_HC_SearchStarting", "QV_HC_SearchSuccess"}},
        // With labels the given locale is ignored: the settings' one is used.
        ListCase{"searchByQueryAndLabels",
                 [](auto& p, Reply r) {
                   p.searchForArticlesUsingQuery(std::string("invoice"),
                                                 std::vector<std::string>{"billing"}, "de",
                                                 replying<QVKHelpCenterArticle>(r));
                 },
                 "/api/v2/help_center/articles/search.json?query=invoice&"
                 "include=sections,categories,users&per_page=100&label_names=billing&"
                 "locale=en-us&origin=mobile_sdk&respect_sanitization_settings=true",
                 1,
                 {"QV_HC_SearchStarting", "QV_HC_SearchSuccess"}},
        ListCase{"suggestions",
                 [](auto& p, Reply r) {
                   auto deflection = std::make_shared<QVKHelpCenterDeflection>();
                   deflection->query = "password";
                   p.getArticleSuggestions(deflection, replying<QVKHelpCenterSimpleArticle>(r));
                 },
                 "/api/mobile/help_center/search/deflect.json?query=password&locale=en-us&"
                 "respect_sanitization_settings=true",
                 1,
                 {"QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchSuccess"}},
        ListCase{"attachments",
                 [](auto& p, Reply r) {
                   p.getAttachmentWithArticleId(kArticleWithAttachments,
                                                replying<QVKHelpCenterAttachment>(r));
                 },
                 "/api/v2/help_center/en-us/articles/360000030017/attachments/block.json&"
                 "per_page=100",
                 2,
                 {"QV_HC_AttachmentsStarting", "QV_HC_AttachmentsUpdated"}}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(HelpCenterProviderTest, ALocaleOverrideIsUsedWithoutFetchingSettings) {
  Support::instance()->setHelpCenterLocaleOverride("de");
  auto answers = list<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithCallback(std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_EQ((*answers)[0].result->front().locale, "de");
  EXPECT_THAT(recorder_->matching("/settings/"), IsEmpty());
  EXPECT_EQ(lastTarget("/categories.json"), "/api/v2/help_center/de/categories.json?per_page=100");
}

TEST_F(HelpCenterProviderTest, UnescapedLabelsWithABlankMakeNoRequestAndAnnounceTheError) {
  auto answers = list<QVKHelpCenterArticle>([&](auto cb) {
    provider_->getArticlesByLabels(std::vector<std::string>{"two words"}, "en-us", std::move(cb));
  });
  settle();
  ASSERT_TRUE((*answers)[0].error);
  EXPECT_FALSE((*answers)[0].result);
  EXPECT_THAT(recorder_->matching("label_names"), IsEmpty());
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_ArticlesStarting", "QV_HC_RequestError"));
  EXPECT_EQ(errorOf(notifications_[1]), (*answers)[0].error);
}

TEST_F(HelpCenterProviderTest, ValidationFailuresAnswerLaterAndSendNothing) {
  auto answers = std::make_shared<Answers<std::vector<QVKHelpCenterArticle>>>();
  provider_->getArticlesByLabels(std::nullopt, "en-us", collect(answers));
  provider_->searchForArticlesUsingQuery(std::string(), "en-us", collect(answers));
  provider_->getArticleWithId(kFirstArticle, "en-us", nullptr);
  // Never inside the call, not even for a refusal.
  EXPECT_EQ(answers->size(), 0u);
  ASSERT_TRUE(pumpUntil([&] { return answers->size() == 2; }));
  EXPECT_EQ((*answers)[0].error->code, QVKValidator::kNull);
  EXPECT_EQ((*answers)[1].error->code, QVKValidator::kEmptyString);
  for (const auto& a : answers->list) {
    EXPECT_FALSE(a.result);
    EXPECT_EQ(a.error->domain, QVKValidator::kErrorDomain);
  }
  // Without a callback an article is not even requested, so no view is recorded.
  settle();
  EXPECT_THAT(recorder_->seen(), IsEmpty());
  EXPECT_THAT(notifications_, IsEmpty());
  EXPECT_THAT(articleViews(), IsEmpty());
}

TEST_F(HelpCenterProviderTest, ASearchObjectGainsItsSideLoadsOnEveryCall) {
  auto search = std::make_shared<QVKHelpCenterSearch>();
  search->query = "password";
  auto first = list<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->searchArticles(search, std::move(cb)); });
  ASSERT_TRUE((*first)[0].result);
  list<QVKHelpCenterArticle>(
      [&](auto cb) { provider_->searchArticles(search, "en-us", std::move(cb)); });
  EXPECT_EQ(search->sideLoads->size(), 6u);
  const auto searches = recorder_->matching("/articles/search.json");
  ASSERT_EQ(searches.size(), 2u);
  EXPECT_THAT(searches[0].target, HasSubstr("include=users,categories,sections&"));
  EXPECT_THAT(searches[1].target,
              HasSubstr("include=users,categories,sections,users,categories,sections"));
  // The answer's count becomes the session's last search...
  const auto last = QVKHelpCenterSessionCache::getLastSearch();
  ASSERT_TRUE(last);
  EXPECT_EQ(last->query(), "password");
  EXPECT_EQ(last->results_count(), static_cast<std::int64_t>((*first)[0].result->size()));
  settle();
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_SearchStarting", "QV_HC_SearchSuccess",
                                               "QV_HC_SearchStarting", "QV_HC_SearchSuccess"));
  // ...and the query a usage event.
  ASSERT_TRUE(pumpUntil([&] {
    return boost::json::serialize(controlJson("blips")).find("password") != std::string::npos;
  }));
}

TEST_F(HelpCenterProviderTest, AnArticleByIdRecordsOneViewCarryingTheLastSearch) {
  auto search = std::make_shared<QVKHelpCenterSearch>();
  search->query = "account";
  list<QVKHelpCenterArticle>([&](auto cb) { provider_->searchArticles(search, std::move(cb)); });

  auto article = list<QVKHelpCenterArticle>(
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
  list<QVKHelpCenterArticle>(
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
  EXPECT_EQ(recorder_->matching("/stats/view.json")[0].target,
            "/api/v2/help_center/en-us/articles/360000030001/stats/view.json");

  const auto names = notificationNames();
  EXPECT_THAT(std::vector<std::string>(names.begin() + 2, names.end()),
              ElementsAre("QV_HC_ArticleByIdStarting", "QV_HC_ArticleByIdSuccess",
                          "QV_HC_ArticleByIdStarting", "QV_HC_ArticleByIdSuccess"));
}

TEST_F(HelpCenterProviderTest, TheOverviewAnswersTheTreeAndAnnouncesNothing) {
  auto tree = call<HelpCenterCategoryViewModelContainer::Categories>([&](auto cb) {
    provider_->getHelpCenterOverviewWithHelpCenterOverviewModel(
        QVKHelpCenterOverviewContentModel::defaultContent(), std::move(cb));
  });
  ASSERT_TRUE((*tree)[0].result) << (*tree)[0].error->debugDescription();
  EXPECT_EQ((*tree)[0].result->size(), 3u);
  EXPECT_EQ(lastTarget("article_tree.json").rfind("/hc/api/mobile/en-us/article_tree.json?", 0),
            0u);
  settle();
  EXPECT_THAT(notifications_, IsEmpty());
}

struct VoteCase {
  const char* label;
  bool up;
  const char* path;
  const char* value;
  std::vector<std::string> notifications;
};

void PrintTo(const VoteCase& c, std::ostream* os) {
  *os << c.label;
}

class HelpCenterVoteTest : public HelpCenterProviderTest,
                           public ::testing::WithParamInterface<VoteCase> {};

TEST_P(HelpCenterVoteTest, AVoteIsPostedAnsweredAndReported) {
  const auto& c = GetParam();
  const std::string article = std::to_string(kFirstArticle + 3);
  auto votes = list<QVKHelpCenterArticleVote>([&](auto cb) {
    if (c.up) {
      provider_->upVoteArticleWithId(article, std::move(cb));
    } else {
      provider_->downVoteArticleWithId(article, std::move(cb));
    }
  });
  settle();
  ASSERT_EQ(votes->size(), 1u);
  ASSERT_TRUE((*votes)[0].result) << (*votes)[0].error->debugDescription();
  ASSERT_EQ((*votes)[0].result->size(), 1u);
  EXPECT_EQ((*votes)[0].result->front().value, c.value);
  const auto sent = recorder_->matching(c.path);
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].method, "POST");
  EXPECT_EQ(sent[0].target, "/api/v2/help_center/articles/" + article + c.path);
  EXPECT_THAT(notificationNames(), ElementsAreArray(c.notifications));
  // Each vote is reported as a usage event.
  ASSERT_TRUE(pumpUntil([&] {
    return boost::json::serialize(controlJson("blips")).find(article) != std::string::npos;
  }));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, HelpCenterVoteTest,
    ::testing::Values(
        VoteCase{"up", true, "/up.json", "1", {"QV_HC_UpvoteStarting", "QV_HC_UpvoteSuccess"}},
        VoteCase{"down",
                 false,
                 "/down.json",
                 "-1",
                 {"QV_HC_DownvoteStarting", "QV_HC_DownvoteSuccess"}}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(HelpCenterProviderTest, RemovingAVoteAnswersTheResponse) {
  auto down = list<QVKHelpCenterArticleVote>([&](auto cb) {
    provider_->downVoteArticleWithId(std::to_string(kFirstArticle), std::move(cb));
  });
  ASSERT_TRUE((*down)[0].result);
  settle();
  notifications_.clear();
  const auto voteId = std::to_string((*down)[0].result->front().identifier.value_or(0));
  auto removed = call<QVKDispatcherResponse>(
      [&](auto cb) { provider_->removeVoteWithId(voteId, std::move(cb)); });
  ASSERT_TRUE((*removed)[0].result);
  EXPECT_EQ((*removed)[0].result->response->statusCode(), 204);
  EXPECT_EQ(recorder_->matching("/votes/").at(0).method, "DELETE");
  EXPECT_EQ(lastTarget("/votes/"), "/api/v2/help_center/votes/" + voteId + ".json");
  settle();
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_VoteDeleteStarting", "QV_HC_VoteDeleteSuccess"));
}

TEST_F(HelpCenterProviderTest, WithVotingDisabledAVoteIsAnsweredTwice) {
  stopCore();
  emulator_->control("PUT", "settings", R"({"voting":false})");
  startCore();
  auto up = list<QVKHelpCenterArticleVote>(
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
  provider_->getCategoriesWithLocale("en-us", collect(answers));
  provider_.reset();
  ASSERT_TRUE(pumpUntil([&] { return answers->size() == 1; }));
  EXPECT_TRUE((*answers)[0].result);
  settle();
  EXPECT_THAT(notificationNames(sender),
              ElementsAre("QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"));
}

}  // namespace
}  // namespace velmaro::testing
