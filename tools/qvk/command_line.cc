#include "tools/qvk/command_line.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

namespace qvk {

namespace {

constexpr const char* kFooter =
    "Environment: QVK_URL, QVK_APP_ID, QVK_CLIENT_ID and QVK_DATA_DIR give the defaults of\n"
    "--url, --app-id, --client-id and --data-dir.\n"
    "Exit status: 0 success, 1 an error from the service or the library, 2 a usage error.";

// Which field of HcArguments an option fills.
enum class Field {
  id,
  textId,
  query,
  labels,
  categoryIds,
  sectionIds,
  category,
  section,
  page,
  perPage
};

// The storage CLI11 writes into. Options of different commands share it:
// only the options of the command that ran have a count, and only those are
// copied into HcArguments.
struct RawArguments {
  std::int64_t id = 0;
  std::string textId;
  std::string query;
  std::vector<std::string> labels;
  std::vector<std::int64_t> categoryIds;
  std::vector<std::int64_t> sectionIds;
  std::int64_t category = 0;
  std::int64_t section = 0;
  std::int64_t page = 0;
  std::int64_t perPage = 0;
  std::string settingsGroup = "support";
};

// The hc and settings commands on a CLI11 app, and the way back from what
// CLI11 parsed to a ParsedCommand.
class CommandTree {
 public:
  explicit CommandTree(CLI::App& root) {
    addHelpCenter(root);
    addSettings(root);
  }

  void addShell(CLI::App& root) {
    commands_.push_back(
        {root.add_subcommand("shell",
                             "Read commands from standard input and run them in one "
                             "process, keeping the library's memory between them"),
         CommandKind::shell});
  }

  std::optional<ParsedCommand> result() const {
    for (const auto& [app, kind] : commands_) {
      if (!app->parsed()) continue;
      ParsedCommand command;
      command.kind = kind;
      command.settingsGroup = raw_.settingsGroup;
      for (const auto& [option, field] : options_) {
        if (option->count() > 0) copy(field, command.hc);
      }
      return command;
    }
    return std::nullopt;
  }

 private:
  CLI::App* command(CLI::App* parent, const char* name, const char* description, CommandKind kind) {
    auto* app = parent->add_subcommand(name, description);
    commands_.push_back({app, kind});
    return app;
  }

  void bind(CLI::Option* option, Field field) { options_.emplace_back(option, field); }

  void id(CLI::App* app, const char* name, const char* description) {
    bind(app->add_option(name, raw_.id, description)->required(), Field::id);
  }
  void textId(CLI::App* app, const char* name, const char* description) {
    bind(app->add_option(name, raw_.textId, description)->required(), Field::textId);
  }
  void query(CLI::App* app) {
    bind(app->add_option("QUERY", raw_.query, "The search text")->required(), Field::query);
  }
  void labelOption(CLI::App* app) {
    bind(app->add_option("--label", raw_.labels, "An article label (repeatable)")
             ->type_name("L")
             ->allow_extra_args(false),
         Field::labels);
  }
  void paging(CLI::App* app) {
    bind(app->add_option("--page", raw_.page, "Page number")
             ->type_name("N")
             ->check(CLI::PositiveNumber),
         Field::page);
    bind(app->add_option("--per-page", raw_.perPage, "Results per page")
             ->type_name("N")
             ->check(CLI::PositiveNumber),
         Field::perPage);
  }

  void addHelpCenter(CLI::App& root) {
    auto* hc = root.add_subcommand("hc",
                                   "The Help Center: categories, sections, articles, "
                                   "search, suggestions, votes");
    hc->require_subcommand(1);
    command(hc, "categories", "List the categories", CommandKind::hcCategories);
    id(command(hc, "category", "Show one category", CommandKind::hcCategory), "ID", "Category id");
    id(command(hc, "sections", "List the sections of a category", CommandKind::hcSections),
       "CATEGORY_ID", "Category id");
    id(command(hc, "section", "Show one section", CommandKind::hcSection), "ID", "Section id");

    auto* articles =
        command(hc, "articles", "List the articles of a section", CommandKind::hcArticles);
    id(articles, "SECTION_ID", "Section id");
    labelOption(articles);

    auto* byLabels = command(hc, "articles-by-labels", "List the articles with these labels",
                             CommandKind::hcArticlesByLabels);
    bind(byLabels->add_option("LABEL", raw_.labels, "Article labels")->required(), Field::labels);

    id(command(hc, "article", "Show an article (and record the view)", CommandKind::hcArticle),
       "ID", "Article id");
    paging(command(hc, "flat", "List all articles, newest first, one page at a time",
                   CommandKind::hcFlat));

    auto* overview = command(hc, "overview", "Show the article tree of the Help Center",
                             CommandKind::hcOverview);
    auto* sections =
        overview
            ->add_option("--sections", raw_.sectionIds, "Only these sections (comma-separated ids)")
            ->delimiter(',')
            ->type_name("ID,ID");
    auto* categories = overview
                           ->add_option("--categories", raw_.categoryIds,
                                        "Only these categories (comma-separated ids)")
                           ->delimiter(',')
                           ->type_name("ID,ID");
    sections->excludes(categories);
    bind(sections, Field::sectionIds);
    bind(categories, Field::categoryIds);
    labelOption(overview);

    addSearch(hc);
    addTail(hc);
  }

  void addSearch(CLI::App* hc) {
    auto* search =
        command(hc, "search", "Search the articles (a search object)", CommandKind::hcSearch);
    query(search);
    labelOption(search);
    bind(search->add_option("--category", raw_.categoryIds, "Only this category (repeatable)")
             ->type_name("ID")
             ->allow_extra_args(false),
         Field::categoryIds);
    bind(search->add_option("--section", raw_.sectionIds, "Only this section (repeatable)")
             ->type_name("ID")
             ->allow_extra_args(false),
         Field::sectionIds);
    paging(search);

    auto* searchQuery = command(hc, "search-query", "Search the articles by query (and labels)",
                                CommandKind::hcSearchQuery);
    query(searchQuery);
    labelOption(searchQuery);

    auto* suggest = command(hc, "suggest", "Suggest articles for a request being written",
                            CommandKind::hcSuggest);
    query(suggest);
    labelOption(suggest);
    bind(suggest->add_option("--category", raw_.category, "Only this category")->type_name("ID"),
         Field::category);
    bind(suggest->add_option("--section", raw_.section, "Only this section")->type_name("ID"),
         Field::section);
  }

  void addTail(CLI::App* hc) {
    id(command(hc, "attachments", "List an article's attachments", CommandKind::hcAttachments),
       "ARTICLE_ID", "Article id");
    textId(command(hc, "upvote", "Vote an article up", CommandKind::hcUpvote), "ARTICLE_ID",
           "Article id");
    textId(command(hc, "downvote", "Vote an article down", CommandKind::hcDownvote), "ARTICLE_ID",
           "Article id");
    textId(command(hc, "unvote", "Remove a vote", CommandKind::hcUnvote), "VOTE_ID", "Vote id");
  }

  void addSettings(CLI::App& root) {
    auto* settings = command(&root, "settings", "Show the service's settings for this app",
                             CommandKind::settings);
    settings
        ->add_option("GROUP", raw_.settingsGroup,
                     "support (default), conversations, attachments, ticket-forms, contact-us or "
                     "help-center")
        ->check(CLI::IsMember({"support", "conversations", "attachments", "ticket-forms",
                               "contact-us", "help-center"}));
  }

  void copy(Field field, HcArguments& hc) const {
    switch (field) {
      case Field::id:
        hc.id = raw_.id;
        break;
      case Field::textId:
        hc.textId = raw_.textId;
        break;
      case Field::query:
        hc.query = raw_.query;
        break;
      case Field::labels:
        hc.labels = raw_.labels;
        break;
      case Field::categoryIds:
        hc.categoryIds = raw_.categoryIds;
        break;
      case Field::sectionIds:
        hc.sectionIds = raw_.sectionIds;
        break;
      case Field::category:
        hc.categoryIds = std::vector<std::int64_t>{raw_.category};
        break;
      case Field::section:
        hc.sectionIds = std::vector<std::int64_t>{raw_.section};
        break;
      case Field::page:
        hc.page = raw_.page;
        break;
      case Field::perPage:
        hc.perPage = raw_.perPage;
        break;
    }
  }

  RawArguments raw_;
  std::vector<std::pair<CLI::App*, CommandKind>> commands_;
  std::vector<std::pair<CLI::Option*, Field>> options_;
};

void addGlobalOptions(CLI::App& app, GlobalOptions& o) {
  app.add_option("--url", o.url, "Service base URL (default: $QVK_URL)")->type_name("URL");
  app.add_option("--app-id", o.appId, "Application id (default: $QVK_APP_ID, else demo)")
      ->type_name("ID");
  app.add_option("--client-id", o.clientId, "Client id (default: $QVK_CLIENT_ID, else demo)")
      ->type_name("ID");
  auto* jwt = app.add_option("--jwt", o.jwt, "Act as the user of this JWT (default: anonymous)")
                  ->type_name("TOKEN");
  app.add_option("--name", o.name, "Anonymous user's name")->excludes(jwt);
  app.add_option("--email", o.email, "Anonymous user's email")->excludes(jwt);
  app.add_option("--locale", o.locale, "Help Center locale, instead of the settings' one")
      ->type_name("TAG");
  app.add_option("--data-dir", o.dataDir,
                 "Where the core library keeps its files (default: $QVK_DATA_DIR, else a "
                 "per-user folder)")
      ->type_name("DIR");
  app.add_flag("--json", o.json, "Print one JSON document instead of a table");
  app.add_flag("-v", o.verbosity, "Log to standard error: -v info, -vv debug, -vvv verbose");
}

void applyEnvironment(GlobalOptions& o, const CommandLine::Environment& environment) {
  if (!environment) return;
  if (auto url = environment("QVK_URL")) o.url = *url;
  if (auto appId = environment("QVK_APP_ID")) o.appId = *appId;
  if (auto clientId = environment("QVK_CLIENT_ID")) o.clientId = *clientId;
  if (auto dataDir = environment("QVK_DATA_DIR")) o.dataDir = *dataDir;
}

// CLI11 writes into `outcome` through the bindings made before.
void run(CLI::App& app, std::vector<std::string> args, const CommandTree& tree,
         ParseOutcome& outcome) {
  std::reverse(args.begin(), args.end());  // CLI11 takes them last-first
  try {
    app.parse(args);
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream err;
    app.exit(error, out, err);
    bool help = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    outcome.exitCode = help ? 0 : 2;
    outcome.message = help ? out.str() : err.str();
    return;
  }
  if (auto command = tree.result()) {
    outcome.command = std::move(*command);
  } else {
    outcome.exitCode = 2;
    outcome.message = "error: no command given\n" + app.help();
  }
}

}  // namespace

CommandLine::Environment CommandLine::processEnvironment() {
  return [](const std::string& name) -> std::optional<std::string> {
    const char* value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0') return std::nullopt;
    return std::string(value);
  };
}

ParseOutcome CommandLine::parse(const std::vector<std::string>& args,
                                const Environment& environment) {
  ParseOutcome outcome;
  applyEnvironment(outcome.options, environment);
  CLI::App app{"qvk: the support library's operations from the command line", "qvk"};
  app.footer(kFooter);
  app.require_subcommand(1);
  addGlobalOptions(app, outcome.options);
  CommandTree tree(app);
  tree.addShell(app);
  run(app, args, tree, outcome);
  return outcome;
}

ParseOutcome CommandLine::parseCommand(const std::vector<std::string>& words) {
  std::vector<std::string> args = words;
  if (!args.empty() && args.front() == "qvk") args.erase(args.begin());
  ParseOutcome outcome;
  CLI::App app{"Commands of a qvk shell session (global options go to `qvk shell` itself)", "qvk"};
  app.require_subcommand(1);
  CommandTree tree(app);
  run(app, std::move(args), tree, outcome);
  return outcome;
}

}  // namespace qvk
