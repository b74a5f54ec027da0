#include "tools/qvk/command_line.h"

#include <map>

#include <gtest/gtest.h>

#include "tools/qvk/query_builder.h"

namespace qvk {
namespace {

using Strings = std::vector<std::string>;
using Ids = std::vector<std::int64_t>;

CommandLine::Environment environment(std::map<std::string, std::string> values = {}) {
  return [values](const std::string& name) -> std::optional<std::string> {
    auto found = values.find(name);
    if (found == values.end()) return std::nullopt;
    return found->second;
  };
}

ParseOutcome parse(const Strings& args) {
  return CommandLine::parse(args, environment());
}

HcArguments hcArguments(const Strings& args) {
  auto outcome = parse(args);
  EXPECT_TRUE(outcome.shouldRun()) << outcome.message;
  return outcome.command.hc;
}

TEST(CommandLine, GlobalOptionsComeFromTheEnvironmentUnlessGiven) {
  auto env = environment({{"QVK_URL", "http://env:1"},
                          {"QVK_APP_ID", "env-app"},
                          {"QVK_CLIENT_ID", "env-client"},
                          {"QVK_DATA_DIR", "/tmp/env"}});
  auto fromEnv = CommandLine::parse({"hc", "categories"}, env);
  ASSERT_TRUE(fromEnv.shouldRun());
  EXPECT_EQ(fromEnv.options.url, "http://env:1");
  EXPECT_EQ(fromEnv.options.appId, "env-app");
  EXPECT_EQ(fromEnv.options.clientId, "env-client");
  EXPECT_EQ(fromEnv.options.dataDir, "/tmp/env");

  auto given =
      CommandLine::parse({"--url", "http://x:2", "--app-id", "a", "--client-id", "c", "--data-dir",
                          "/d", "--locale", "de", "--json", "-vv", "hc", "categories"},
                         env);
  ASSERT_TRUE(given.shouldRun()) << given.message;
  EXPECT_EQ(given.options.url, "http://x:2");
  EXPECT_EQ(given.options.appId, "a");
  EXPECT_EQ(given.options.clientId, "c");
  EXPECT_EQ(given.options.dataDir, "/d");
  EXPECT_EQ(given.options.locale, "de");
  EXPECT_TRUE(given.options.json);
  EXPECT_EQ(given.options.verbosity, 2);
}

TEST(CommandLine, DefaultsWithoutEnvironment) {
  auto outcome = parse({"settings"});
  ASSERT_TRUE(outcome.shouldRun());
  EXPECT_FALSE(outcome.options.url);
  EXPECT_EQ(outcome.options.appId, "demo");
  EXPECT_EQ(outcome.options.clientId, "demo");
  EXPECT_FALSE(outcome.options.jwt);
  EXPECT_FALSE(outcome.options.json);
  EXPECT_EQ(outcome.options.verbosity, 0);
  EXPECT_EQ(outcome.command.kind, CommandKind::settings);
  EXPECT_EQ(outcome.command.settingsGroup, "support");
}

struct UsageCase {
  const char* name;
  Strings args;
  int exitCode;
};

class CommandLineUsage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(CommandLineUsage, EndsWithoutRunning) {
  auto outcome = parse(GetParam().args);
  ASSERT_FALSE(outcome.shouldRun());
  EXPECT_EQ(*outcome.exitCode, GetParam().exitCode);
  EXPECT_FALSE(outcome.message.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Args, CommandLineUsage,
    ::testing::Values(UsageCase{"Help", {"--help"}, 0}, UsageCase{"HcHelp", {"hc", "--help"}, 0},
                      UsageCase{"NoCommand", {}, 2}, UsageCase{"UnknownCommand", {"frobnicate"}, 2},
                      UsageCase{"HcWithoutSubcommand", {"hc"}, 2},
                      UsageCase{"MissingId", {"hc", "category"}, 2},
                      UsageCase{"IdNotANumber", {"hc", "section", "abc"}, 2},
                      UsageCase{"UnknownSettingsGroup", {"settings", "colours"}, 2},
                      UsageCase{"SectionsAndCategories",
                                {"hc", "overview", "--sections", "1", "--categories", "2"},
                                2},
                      UsageCase{"ZeroPage", {"hc", "flat", "--page", "0"}, 2},
                      UsageCase{"JwtWithName", {"--jwt", "t", "--name", "n", "settings"}, 2},
                      UsageCase{"SuggestTwoQueries", {"hc", "suggest", "a", "b"}, 2}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(CommandLine, SearchLeavesWhatWasNotGivenUnset) {
  auto search = QueryBuilder::search(hcArguments({"hc", "search", "pay"}));
  EXPECT_EQ(search.query, "pay");
  EXPECT_EQ(search.labelNames, Strings{});  // the object's own initial value
  EXPECT_FALSE(search.categoryIds);
  EXPECT_FALSE(search.sectionIds);
  EXPECT_FALSE(search.page);
  EXPECT_FALSE(search.resultsPerPage);
  EXPECT_FALSE(search.locale);
}

TEST(CommandLine, SearchTakesEveryOption) {
  auto search = QueryBuilder::search(
      hcArguments({"hc", "search", "reset password", "--label", "a", "--label", "b", "--category",
                   "1", "--category", "2", "--section", "3", "--page", "2", "--per-page", "5"}));
  EXPECT_EQ(search.query, "reset password");
  EXPECT_EQ(search.labelNames, (Strings{"a", "b"}));
  EXPECT_EQ(search.categoryIds, (Ids{1, 2}));
  EXPECT_EQ(search.sectionIds, (Ids{3}));
  EXPECT_EQ(search.page, 2);
  EXPECT_EQ(search.resultsPerPage, 5);
}

TEST(CommandLine, SuggestTakesOneCategoryAndSection) {
  auto bare = QueryBuilder::deflection(hcArguments({"hc", "suggest", "pay"}));
  EXPECT_EQ(bare.query, "pay");
  EXPECT_FALSE(bare.categoryId);
  EXPECT_FALSE(bare.sectionId);
  EXPECT_EQ(bare.labelNames, Strings{});

  auto narrowed = QueryBuilder::deflection(
      hcArguments({"hc", "suggest", "pay", "--category", "11", "--section", "22", "--label", "x"}));
  EXPECT_EQ(narrowed.categoryId, 11);
  EXPECT_EQ(narrowed.sectionId, 22);
  EXPECT_EQ(narrowed.labelNames, Strings{"x"});
}

TEST(CommandLine, OverviewGroupsBySectionsOrCategories) {
  using Model = velmaro::QVKHelpCenterOverviewContentModel;
  auto whole = QueryBuilder::overview(hcArguments({"hc", "overview"}));
  EXPECT_EQ(whole.groupType, Model::kGroupTypeDefault);
  EXPECT_FALSE(whole.groupIds);
  EXPECT_FALSE(whole.labels);
  EXPECT_EQ(whole.formQueryString(), "?per_page=1000");

  auto sections = QueryBuilder::overview(hcArguments({"hc", "overview", "--sections", "1,2"}));
  EXPECT_EQ(sections.groupType, Model::kGroupTypeSection);
  EXPECT_EQ(sections.groupIds, (Ids{1, 2}));

  auto categories = QueryBuilder::overview(
      hcArguments({"hc", "overview", "--categories", "3", "--label", "x", "--label", "y"}));
  EXPECT_EQ(categories.groupType, Model::kGroupTypeCategory);
  EXPECT_EQ(categories.groupIds, (Ids{3}));
  EXPECT_EQ(categories.labels, (Strings{"x", "y"}));
}

TEST(CommandLine, FlatUsesTheConvenienceFormWithoutPaging) {
  EXPECT_FALSE(QueryBuilder::listArticles(hcArguments({"hc", "flat"})));
  auto page = QueryBuilder::listArticles(hcArguments({"hc", "flat", "--page", "3"}));
  ASSERT_TRUE(page);
  EXPECT_EQ(page->page(), 3);
  EXPECT_EQ(page->perPage(), QueryBuilder::kDefaultPerPage);
  auto perPage = QueryBuilder::listArticles(hcArguments({"hc", "flat", "--per-page", "7"}));
  ASSERT_TRUE(perPage);
  EXPECT_EQ(perPage->page(), QueryBuilder::kDefaultPage);
  EXPECT_EQ(perPage->perPage(), 7);
}

TEST(CommandLine, IdsAndLabelsOfTheOtherCommands) {
  auto articles = hcArguments({"hc", "articles", "360000020001"});
  EXPECT_EQ(articles.id, 360000020001);
  EXPECT_FALSE(articles.labels);
  EXPECT_EQ(hcArguments({"hc", "articles", "5", "--label", "faq"}).labels, Strings{"faq"});
  EXPECT_EQ(hcArguments({"hc", "articles-by-labels", "a", "b"}).labels, (Strings{"a", "b"}));
  EXPECT_FALSE(hcArguments({"hc", "search-query", "q"}).labels);
  EXPECT_EQ(hcArguments({"hc", "upvote", "42"}).textId, "42");
  EXPECT_EQ(hcArguments({"hc", "unvote", "9"}).textId, "9");
}

TEST(CommandLine, ShellLinesAreCommandsOnly) {
  auto line = CommandLine::parseCommand({"qvk", "hc", "article", "7"});
  ASSERT_TRUE(line.shouldRun()) << line.message;
  EXPECT_EQ(line.command.kind, CommandKind::hcArticle);
  EXPECT_EQ(line.command.hc.id, 7);

  auto settings = CommandLine::parseCommand({"settings", "help-center"});
  ASSERT_TRUE(settings.shouldRun());
  EXPECT_EQ(settings.command.settingsGroup, "help-center");

  auto global = CommandLine::parseCommand({"--url", "http://x", "hc", "categories"});
  EXPECT_EQ(global.exitCode, 2);
  EXPECT_EQ(CommandLine::parseCommand({"shell"}).exitCode, 2);
}

}  // namespace
}  // namespace qvk
