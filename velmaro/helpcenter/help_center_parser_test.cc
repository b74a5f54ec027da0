// Help Center records and the parser that joins articles with side-loads.
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_article_vote.h"
#include "velmaro/helpcenter/qvk_help_center_attachment.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"
#include "velmaro/helpcenter/qvk_help_center_simple_article.h"

namespace velmaro {
namespace {

boost::json::object object(const char* json) {
  return boost::json::parse(json).as_object();
}

constexpr const char* kArticleList = R"({
  "articles": [
    {"id": 1, "section_id": 10, "title": "First", "body": "<p>a</p>", "author_id": 100,
     "created_at": "2017-03-01T10:20:30Z", "position": 3, "outdated": true,
     "vote_sum": 3, "vote_count": 5, "locale": "en-us", "label_names": ["a", "b"],
     "html_url": "https://hc.test/1"},
    {"id": 2, "section_id": 11, "title": "Second", "body": null, "author_id": 999},
    {"id": 3, "section_id": 77, "title": "Orphan", "author_id": 101}
  ],
  "sections": [{"id": 10, "category_id": 5, "name": "FAQ"},
               {"id": 11, "category_id": 6, "name": "Billing"}],
  "categories": [{"id": 5, "name": "General"}],
  "users": [{"id": 100, "name": "Ann"}, {"id": 101, "name": "Bob"}]
})";

TEST(HelpCenterParserTest, ArticlesGetAuthorsAndBreadcrumbs) {
  const auto response = object(kArticleList);
  const auto articles = QVKHelpCenterParser(response).parseArticles(response);
  ASSERT_EQ(articles.size(), 3u);

  const auto& first = articles[0];
  EXPECT_EQ(first.identifier, 1);
  EXPECT_EQ(first.title, "First");
  EXPECT_EQ(first.body, "<p>a</p>");
  EXPECT_EQ(first.author_name, "Ann");
  EXPECT_EQ(first.articleParents, "General \u2022 FAQ");
  EXPECT_EQ(first.position, 3);
  EXPECT_TRUE(first.outdated);
  EXPECT_EQ(first.labelNames, (std::vector<std::string>{"a", "b"}));
  ASSERT_TRUE(first.created_at);
  EXPECT_EQ(std::chrono::system_clock::to_time_t(*first.created_at), 1488363630);

  // Null body becomes "", an unknown author stays absent, a missing category
  // or section prints as the absent marker.
  EXPECT_EQ(articles[1].body, "");
  EXPECT_FALSE(articles[1].author_name);
  EXPECT_EQ(articles[1].articleParents, "(null) \u2022 Billing");
  EXPECT_FALSE(articles[2].body);
  EXPECT_EQ(articles[2].articleParents, "(null) \u2022 (null)");
}

struct SideLoadCase {
  const char* label;
  const char* response;
  bool withParents;
};

class SideLoadTest : public ::testing::TestWithParam<SideLoadCase> {};

TEST_P(SideLoadTest, BreadcrumbsNeedBothSectionsAndCategories) {
  const auto response = object(GetParam().response);
  const auto articles =
      QVKHelpCenterParser(response).parseArticlesWithRootKey(response, "articles");
  ASSERT_EQ(articles.size(), 1u);
  EXPECT_EQ(articles[0].author_name, "Ann");  // users are joined in every case
  EXPECT_EQ(articles[0].articleParents.has_value(), GetParam().withParents);
}

INSTANTIATE_TEST_SUITE_P(
    Responses, SideLoadTest,
    ::testing::Values(
        SideLoadCase{"both",
                     R"({"articles":[{"id":1,"section_id":10,"title":"t","author_id":100}],
                         "sections":[{"id":10,"category_id":5,"name":"S"}],
                         "categories":[{"id":5,"name":"C"}],"users":[{"id":100,"name":"Ann"}]})",
                     true},
        SideLoadCase{"noCategories",
                     R"({"articles":[{"id":1,"section_id":10,"title":"t","author_id":100}],
                         "sections":[{"id":10,"category_id":5,"name":"S"}],
                         "users":[{"id":100,"name":"Ann"}]})",
                     false},
        SideLoadCase{"noSections",
                     R"({"articles":[{"id":1,"section_id":10,"title":"t","author_id":100}],
                         "categories":[{"id":5,"name":"C"}],"users":[{"id":100,"name":"Ann"}]})",
                     false}),
    [](const auto& p) { return std::string(p.param.label); });

TEST(HelpCenterParserTest, SearchResultsAndMissingRoots) {
  const auto response = object(R"({"results":[{"id":9,"title":"Found"}],"count":1})");
  const QVKHelpCenterParser parser(response);
  ASSERT_EQ(parser.parseArticleSearchResults(response).size(), 1u);
  EXPECT_TRUE(parser.parseArticles(response).empty());
  EXPECT_TRUE(parser.sectionLookup().empty());
}

TEST(HelpCenterParserTest, LaterSideLoadWithTheSameIdWins) {
  const auto users = boost::json::parse(R"([{"id":1,"name":"Old"},{"id":1,"name":"New"},
                                            {"name":"No id"}])");
  const auto lookup = QVKHelpCenterParser::createAuthorLookup(users.as_array());
  ASSERT_EQ(lookup.size(), 1u);
  EXPECT_EQ(lookup.at(1), "New");
}

TEST(HelpCenterParserTest, WrongTypesNeverFailAParse) {
  const auto article = QVKHelpCenterArticle::parseArticle(object(
      R"({"id":"7","section_id":1.9,"position":"12abc","outdated":"yes","vote_sum":[],
          "body":5,"label_names":[1,"x"],"created_at":"2017-03-01"})"));
  EXPECT_FALSE(article.identifier);
  EXPECT_EQ(article.section_id, 1);
  EXPECT_EQ(article.position, 12);
  EXPECT_TRUE(article.outdated);
  EXPECT_FALSE(article.voteSum);
  EXPECT_FALSE(article.body);
  EXPECT_EQ(article.labelNames, (std::vector<std::string>{"x"}));
  EXPECT_FALSE(article.created_at);
  EXPECT_EQ(article.title, "");
}

struct IdCase {
  const char* name;
  const char* json;
  std::optional<std::int64_t> id;
};

class IdRangeTest : public ::testing::TestWithParam<IdCase> {};

// Clamped, ids past the 64-bit range would all become one id.
TEST_P(IdRangeTest, AnIdOutOfRangeIsNoId) {
  std::vector<std::string> warnings;
  quorvel::CoreLogger::setSink([&warnings](quorvel::LogLevel level, std::string_view line) {
    if (level == quorvel::LogLevel::warn) warnings.emplace_back(line);
  });
  const auto article = QVKHelpCenterArticle::parseArticle(object(GetParam().json));
  quorvel::CoreLogger::resetForTesting();
  EXPECT_EQ(article.identifier, GetParam().id);
  EXPECT_EQ(warnings.size(), GetParam().id ? 0u : 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Ids, IdRangeTest,
    ::testing::Values(IdCase{"Largest", R"({"id": 9223372036854775807})", INT64_MAX},
                      IdCase{"Smallest", R"({"id": -9223372036854775808})", INT64_MIN},
                      IdCase{"TwoToThe63", R"({"id": 9223372036854775808})", std::nullopt},
                      IdCase{"TwoToThe64", R"({"id": 18446744073709551616})", std::nullopt},
                      IdCase{"TwoToThe63AsDouble", R"({"id": 9.223372036854775808e18})",
                             std::nullopt},
                      IdCase{"Huge", R"({"id": 1e32})", std::nullopt},
                      IdCase{"Infinite", R"({"id": 1e400})", std::nullopt}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(HelpCenterParserTest, FlatArticlesSortByCategorySectionAndTitleIgnoringCase) {
  const auto response = object(R"({
    "articles": [{"id":1,"section_id":10,"title":"z"}, {"id":2,"section_id":20,"title":"a"},
                 {"id":3,"section_id":20,"title":"B"}, {"id":4,"section_id":30,"title":"q"},
                 {"id":5,"section_id":10,"title":"Ézé"},
                 {"id":6,"section_id":10,"title":"éa"}],
    "sections": [{"id":10,"category_id":1,"name":"x"}, {"id":20,"category_id":2,"name":"y"},
                 {"id":30,"category_id":2,"name":"X"}],
    "categories": [{"id":1,"name":"b"}, {"id":2,"name":"A"}]})");
  const auto flat = QVKHelpCenterParser(response).parseFlatArticles(response);
  std::vector<std::int64_t> order;
  for (const auto& entry : flat) order.push_back(*entry.article.identifier);
  // Case folding reaches beyond ASCII: "éa" sorts before "Ézé" (both after "z").
  EXPECT_EQ(order, (std::vector<std::int64_t>{4, 2, 3, 1, 6, 5}));
  EXPECT_EQ(flat[0].getArticleBreadcrumb(), "A, X, q");
}

struct VoteCase {
  std::optional<std::int64_t> sum;
  std::optional<std::int64_t> count;
  std::int64_t up;
  std::int64_t down;
};

class VoteCountTest : public ::testing::TestWithParam<VoteCase> {};

TEST_P(VoteCountTest, UpAndDownVotes) {
  std::vector<std::string> errors;
  quorvel::CoreLogger::setSink([&](quorvel::LogLevel level, std::string_view message) {
    if (level == quorvel::LogLevel::error) errors.emplace_back(message);
  });
  QVKHelpCenterArticle article;
  article.voteSum = GetParam().sum;
  article.voteCount = GetParam().count;
  EXPECT_EQ(article.getUpvoteCount(), GetParam().up);
  EXPECT_EQ(article.getDownvoteCount(), GetParam().down);
  quorvel::CoreLogger::resetForTesting();
  const bool unknown = !GetParam().sum || !GetParam().count;
  ASSERT_EQ(errors.size(), unknown ? 2u : 0u);
  if (unknown) {
    EXPECT_EQ(errors[0],
              "Cannot determine vote count because vote_sum and / or vote_count are nil");
  }
}

INSTANTIATE_TEST_SUITE_P(Counts, VoteCountTest,
                         ::testing::Values(VoteCase{3, 5, 4, 1}, VoteCase{-1, 2, 0, 1},
                                           VoteCase{-5, 5, 0, 5}, VoteCase{0, 0, 0, 0},
                                           VoteCase{std::nullopt, 5, -1, -1},
                                           VoteCase{2, std::nullopt, -1, -1}));

struct SizeCase {
  std::uint64_t size;
  const char* text;
};

class FileSizeTest : public ::testing::TestWithParam<SizeCase> {};

TEST_P(FileSizeTest, HumanReadable) {
  QVKHelpCenterAttachment attachment;
  attachment.size = GetParam().size;
  EXPECT_EQ(attachment.humanReadableFileSize(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FileSizeTest,
                         ::testing::Values(SizeCase{0, "0 B"}, SizeCase{512, "512 B"},
                                           SizeCase{1023, "1023 B"}, SizeCase{1024, "1.0 KB"},
                                           SizeCase{1536, "1.5 KB"}, SizeCase{1048575, "1024.0 KB"},
                                           SizeCase{1048576, "1.0 MB"},
                                           SizeCase{1073741824, "1.0 GB"},
                                           SizeCase{1099511627776ULL, "1.0 TB"},
                                           SizeCase{1ULL << 60, "1.0 EB"}));

TEST(HelpCenterRecordsTest, VotesSimpleArticlesAndAttachments) {
  const auto votes = QVKHelpCenterArticleVote::parseArticleVotes(object(
      R"({"votes":[{"id":1,"user_id":2,"value":-1,"item_id":3,"item_type":"Article",
                    "created_at":"2017-03-01T10:20:30Z"}]})"));
  ASSERT_EQ(votes.size(), 1u);
  EXPECT_EQ(votes[0].value, "-1");
  EXPECT_EQ(votes[0].itemType, "Article");
  EXPECT_EQ(votes[0].description().rfind("QVKHelpCenterArticleVote:\n{", 0), 0u);

  const auto simple = QVKHelpCenterSimpleArticle::parseDeflectionSearchResults(
      object(R"({"results":[{"id":360001234567,"title":"A &amp; B"}]})"));
  ASSERT_EQ(simple.size(), 1u);
  EXPECT_EQ(simple[0].id, "360001234567");
  EXPECT_EQ(simple[0].title, "A &amp; B");  // deflection titles are not converted

  const auto attachments = QVKHelpCenterAttachment::parseAttachments(object(
      R"({"article_attachments":[{"id":4,"file_name":"a.png","size":2048,"inline":true}]})"));
  ASSERT_EQ(attachments.size(), 1u);
  EXPECT_TRUE(attachments[0].isInline);
  EXPECT_EQ(attachments[0].size, 2048u);
  EXPECT_TRUE(QVKHelpCenterAttachment::parseAttachments(object("{}")).empty());
}

TEST(HelpCenterRecordsTest, RecordsBecomeJsonByPropertyName) {
  const auto response = object(kArticleList);
  const auto articles = QVKHelpCenterParser(response).parseArticles(response);
  const auto json = boost::json::value_from(articles);
  const auto& first = json.as_array().at(0).as_object();
  EXPECT_EQ(first.at("identifier"), 1);
  EXPECT_EQ(first.at("articleParents"), "General \u2022 FAQ");
  EXPECT_EQ(first.at("created_at"), "2017-03-01T10:20:30Z");
  EXPECT_EQ(first.at("labelNames"), boost::json::parse(R"(["a","b"])"));
  EXPECT_FALSE(json.as_array().at(2).as_object().contains("body"));  // absent stays out

  const auto flat = QVKHelpCenterParser(response).parseFlatArticles(response);
  // Absent categories sort first; an absent section or category is left out.
  const auto orphan = boost::json::value_from(flat.front()).as_object();
  EXPECT_EQ(orphan.at("article").at("identifier"), 3);
  EXPECT_FALSE(orphan.contains("section"));
  const auto complete = boost::json::value_from(flat.back()).as_object();
  EXPECT_EQ(complete.at("section").at("name"), "FAQ");
  EXPECT_EQ(complete.at("category").at("name"), "General");
}

}  // namespace
}  // namespace velmaro
