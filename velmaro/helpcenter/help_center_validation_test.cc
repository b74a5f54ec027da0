// What a refused call logs: the operation's full name, and the absent
// callback's warning under the list callback's name whatever the callback's
// kind. Without a core object there is no main queue, so the refusal is
// answered at once and nothing can be sent.
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"

namespace velmaro {
namespace {

using ::testing::Contains;
using ::testing::StartsWith;

struct RefusalCase {
  const char* label;
  std::function<void(QVKHelpCenterProvider&)> call;
  const char* operation;
};

void PrintTo(const RefusalCase& c, std::ostream* os) {
  *os << c.label;
}

class HelpCenterValidationTest : public ::testing::TestWithParam<RefusalCase> {
 protected:
  void SetUp() override {
    quorvel::CoreLogger::setSink(
        [this](quorvel::LogLevel, std::string_view line) { lines_.emplace_back(line); });
  }
  void TearDown() override { quorvel::CoreLogger::resetForTesting(); }

  std::vector<std::string> lines_;
};

TEST_P(HelpCenterValidationTest, LogsTheFullNameAndTheListCallbackWarning) {
  QVKHelpCenterProvider provider(nullptr);
  GetParam().call(provider);
  EXPECT_THAT(lines_, Contains(StartsWith(std::string(GetParam().operation) +
                                          " failed parameter validation with parameters: \n")));
  EXPECT_THAT(lines_, Contains("Ignoring attempt to respond on a nil QVKHelpCenterCallback"));
}

const std::vector<std::string> kLabels{"faq"};

INSTANTIATE_TEST_SUITE_P(
    Operations, HelpCenterValidationTest,
    ::testing::Values(
        RefusalCase{"categories", [](auto& p) { p.getCategoriesWithLocale("en", nullptr); },
                    "-[QVKHelpCenterProvider getCategoriesWithLocale:callback:]"},
        RefusalCase{"sections", [](auto& p) { p.getSectionsWithCategoryId(1, "en", nullptr); },
                    "-[QVKHelpCenterProvider getSectionsWithCategoryId:locale:withCallback:]"},
        RefusalCase{
            "sectionArticles",
            [](auto& p) { p.getArticlesWithSectionId(1, kLabels, "en", nullptr); },
            "-[QVKHelpCenterProvider getArticlesWithSectionId:labels:locale:withCallback:]"},
        RefusalCase{"search",
                    [](auto& p) {
                      p.searchArticles(std::make_shared<QVKHelpCenterSearch>(), "en", nullptr);
                    },
                    "-[QVKHelpCenterProvider searchArticles:locale:withCallback:]"},
        RefusalCase{"searchByQuery",
                    [](auto& p) { p.searchForArticlesUsingQuery(std::string("q"), "en", nullptr); },
                    "-[QVKHelpCenterProvider searchForArticlesUsingQuery:locale:withCallback:]"},
        RefusalCase{
            "searchByQueryAndLabels",
            [](auto& p) {
              p.searchForArticlesUsingQuery(std::string("q"), kLabels, "en", nullptr);
            },
            "-[QVKHelpCenterProvider searchForArticlesUsingQuery:andLabels:locale:withCallback:]"},
        RefusalCase{"articlesByLabels",
                    [](auto& p) { p.getArticlesByLabels(kLabels, "en", nullptr); },
                    "-[QVKHelpCenterProvider getArticlesByLabels:locale:withCallback:]"},
        RefusalCase{"article", [](auto& p) { p.getArticleWithId(1, "en", nullptr); },
                    "-[QVKHelpCenterProvider getArticleWithId:locale:withCallback:]"},
        RefusalCase{"suggestions",
                    [](auto& p) {
                      p.getArticleSuggestions(std::make_shared<QVKHelpCenterDeflection>(), "en",
                                              nullptr);
                    },
                    "-[QVKHelpCenterProvider getArticleSuggestions:locale:withCallback:]"},
        RefusalCase{"section", [](auto& p) { p.getSectionWithId(1, "en", nullptr); },
                    "-[QVKHelpCenterProvider getSectionWithId:locale:withCallback:]"},
        RefusalCase{"category", [](auto& p) { p.getCategoryWithId(1, "en", nullptr); },
                    "-[QVKHelpCenterProvider getCategoryWithId:locale:withCallback:]"},
        RefusalCase{"flat", [](auto& p) { p.getFlatArticlesWithLocale("en", 1, 10, nullptr); },
                    "-[QVKHelpCenterProvider getFlatArticlesWithLocale:page:perPage:callback:]"},
        RefusalCase{"overview",
                    [](auto& p) {
                      p.getHelpCenterOverviewWithHelpCenterOverviewModel(
                          QVKHelpCenterOverviewContentModel::defaultContent(), nullptr);
                    },
                    "-[QVKHelpCenterProvider "
                    "getHelpCenterOverviewWithHelpCenterOverviewModel:callback:]"},
        RefusalCase{"attachments", [](auto& p) { p.getAttachmentWithArticleId(1, nullptr); },
                    "-[QVKHelpCenterProvider getAttachmentWithArticleId:withCallback:]"},
        RefusalCase{"articleView",
                    [](auto& p) { p.submitRecordArticleView(std::nullopt, nullptr); },
                    "-[QVKHelpCenterProvider submitRecordArticleView:withCallback:]"},
        RefusalCase{"upVote", [](auto& p) { p.upVoteArticleWithId(std::string("1"), nullptr); },
                    "-[QVKHelpCenterProvider upVoteArticleWithId:withCallback:]"},
        RefusalCase{"downVote", [](auto& p) { p.downVoteArticleWithId(std::string("1"), nullptr); },
                    "-[QVKHelpCenterProvider downVoteArticleWithId:withCallback:]"},
        RefusalCase{"removeVote", [](auto& p) { p.removeVoteWithId(std::string("1"), nullptr); },
                    "-[QVKHelpCenterProvider removeVoteWithId:withCallback:]"}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace velmaro
