#include "tools/qvk/command_line.h"

#include <map>

#include <gtest/gtest.h>

#include "tools/qvk/hc_group.h"
#include "tools/qvk/settings_group.h"

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
  EXPECT_EQ(outcome.command->given(), "settings");
  EXPECT_EQ(dynamic_cast<const SettingsGroup&>(*outcome.command).settingsGroup(), "support");
}

struct UsageCase {
  const char* name;
  Strings args;
  int exitCode;
  std::string message;     // the first line of the message; empty: any text
  bool shellLine = false;  // parsed as a line of `qvk shell`
};

class CommandLineUsage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(CommandLineUsage, EndsWithoutRunning) {
  const auto& c = GetParam();
  auto outcome = c.shellLine ? CommandLine::parseCommand(c.args) : parse(c.args);
  ASSERT_FALSE(outcome.shouldRun());
  EXPECT_EQ(*outcome.exitCode, c.exitCode);
  EXPECT_FALSE(outcome.message.empty());
  if (!c.message.empty()) {
    EXPECT_EQ(outcome.message.substr(0, outcome.message.find('\n')), c.message);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Args, CommandLineUsage,
    ::testing::Values(
        UsageCase{"Help", {"--help"}, 0, ""}, UsageCase{"HcHelp", {"hc", "--help"}, 0, ""},
        UsageCase{"NoCommand", {}, 2, "A subcommand is required"},
        UsageCase{"UnknownCommand", {"frobnicate"}, 2, "'frobnicate' is not a command of 'qvk'"},
        UsageCase{"HcWithoutCommand", {"hc"}, 2, "A subcommand is required"},
        UsageCase{"UnknownHcCommand", {"hc", "bogus", "x"}, 2, "'bogus' is not a command of 'hc'"},
        UsageCase{"MissingId", {"hc", "category"}, 2, "ID is required"},
        UsageCase{"IdNotANumber", {"hc", "section", "abc"}, 2, ""},
        // Clamped, these would name record 9223372036854775807.
        UsageCase{"IdPastTheRange",
                  {"hc", "article", "99999999999999999999"},
                  2,
                  "ID: the number 99999999999999999999 is out of the 64-bit range"},
        UsageCase{"ListedIdPastTheRange",
                  {"hc", "overview", "--sections", "1,9223372036854775808"},
                  2,
                  "--sections: the number 9223372036854775808 is out of the 64-bit range"},
        UsageCase{"UnknownSettingsGroup", {"settings", "colours"}, 2, ""},
        UsageCase{"SectionsAndCategories",
                  {"hc", "overview", "--sections", "1", "--categories", "2"},
                  2,
                  ""},
        UsageCase{"ZeroPage", {"hc", "flat", "--page", "0"}, 2, ""},
        UsageCase{"JwtWithName", {"--jwt", "t", "--name", "n", "settings"}, 2, ""},
        UsageCase{"SuggestTwoQueries", {"hc", "suggest", "a", "b"}, 2, ""},
        UsageCase{"SuggestTwoCategories",
                  {"hc", "suggest", "a", "--category", "1", "--category", "2"},
                  2,
                  ""},
        UsageCase{"ShellLineHelp", {"--help"}, 0, "", true},
        UsageCase{"ShellLineGlobalOption", {"--url", "http://x", "hc", "categories"}, 2, "", true},
        UsageCase{"ShellInAShellLine", {"shell"}, 2, "", true},
        UsageCase{"ShellLineUnknownHcCommand",
                  {"qvk", "hc", "bogus"},
                  2,
                  "'bogus' is not a command of 'hc'",
                  true}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

// What an hc command line puts into HcArguments: exactly what was given.
struct HcCase {
  const char* name;
  Strings args;
  std::string command;
  HcArguments expected;
};

class HcCommandLine : public ::testing::TestWithParam<HcCase> {
 protected:
  static void expectArguments(const ParseOutcome& outcome) {
    ASSERT_TRUE(outcome.shouldRun()) << outcome.message;
    EXPECT_EQ(outcome.command->given(), GetParam().command);
    EXPECT_TRUE(dynamic_cast<const HcGroup&>(*outcome.command).arguments() == GetParam().expected);
  }
};

TEST_P(HcCommandLine, FillsTheArgumentsGiven) {
  expectArguments(parse(GetParam().args));
}

TEST_P(HcCommandLine, AsAShellLineToo) {
  expectArguments(CommandLine::parseCommand(GetParam().args));
}

INSTANTIATE_TEST_SUITE_P(
    Args, HcCommandLine,
    ::testing::Values(
        HcCase{"Categories", {"hc", "categories"}, "hc categories", {}},
        HcCase{"Article", {"hc", "article", "7"}, "hc article", {.id = 7}},
        HcCase{"ArticlesWithLabel",
               {"hc", "articles", "5", "--label", "faq"},
               "hc articles",
               {.id = 5, .labels = Strings{"faq"}}},
        HcCase{"ArticlesByLabels",
               {"hc", "articles-by-labels", "a", "b"},
               "hc articles-by-labels",
               {.labels = Strings{"a", "b"}}},
        HcCase{"SearchQuery", {"hc", "search-query", "q"}, "hc search-query", {.query = "q"}},
        HcCase{"Upvote", {"hc", "upvote", "42"}, "hc upvote", {.textId = "42"}},
        HcCase{"SearchWithEveryOption",
               {"hc", "search", "reset password", "--label", "a", "--label", "b", "--category", "1",
                "--category", "2", "--section", "3", "--page", "2", "--per-page", "5"},
               "hc search",
               {.query = "reset password",
                .labels = Strings{"a", "b"},
                .categoryIds = Ids{1, 2},
                .sectionIds = Ids{3},
                .page = 2,
                .perPage = 5}},
        HcCase{"SuggestNarrowed",
               {"hc", "suggest", "pay", "--category", "11", "--section", "22", "--label", "x"},
               "hc suggest",
               {.query = "pay", .labels = Strings{"x"}, .categoryId = 11, .sectionId = 22}},
        HcCase{"OverviewSections",
               {"hc", "overview", "--sections", "1,2"},
               "hc overview",
               {.sectionIds = Ids{1, 2}}},
        HcCase{"OverviewCategoriesAndLabels",
               {"hc", "overview", "--categories", "3", "--label", "x", "--label", "y"},
               "hc overview",
               {.labels = Strings{"x", "y"}, .categoryIds = Ids{3}}},
        HcCase{"FlatPage", {"hc", "flat", "--page", "3"}, "hc flat", {.page = 3}}),
    [](const auto& testCase) { return std::string(testCase.param.name); });

TEST(CommandLine, ShellLineMayStartWithTheProgramName) {
  auto settings = CommandLine::parseCommand({"qvk", "settings", "help-center"});
  ASSERT_TRUE(settings.shouldRun()) << settings.message;
  EXPECT_EQ(dynamic_cast<const SettingsGroup&>(*settings.command).settingsGroup(), "help-center");
}

}  // namespace
}  // namespace qvk
