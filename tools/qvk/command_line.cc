#include "tools/qvk/command_line.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <utility>

#include <CLI/CLI.hpp>

#include "quorvel/platform/url.h"
#include "tools/qvk/command_groups.h"

namespace qvk {

namespace {

constexpr const char* kFooter =
    "Environment: QVK_URL, QVK_APP_ID, QVK_CLIENT_ID and QVK_DATA_DIR give the defaults of\n"
    "--url, --app-id, --client-id and --data-dir.\n"
    "A command waits --timeout seconds (default 30) for its answer; uploads and downloads\n"
    "take as long as they take.\n"
    "Exit status: 0 success, 1 an error from the service or the library (or no answer in\n"
    "time), 2 a usage error.";

// More than 0 and at most a day: a wait is turned into milliseconds, and a
// longer one is a typing mistake rather than a wish.
CLI::Validator secondsValidator() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        char* end = nullptr;
        const double seconds = std::strtod(text.c_str(), &end);
        const bool number = !text.empty() && end == text.c_str() + text.size();
        if (number && seconds > 0 && seconds <= 86'400) return {};
        return "expected a number of seconds greater than 0 (at most 86400), not \"" + text + "\"";
      },
      "SECONDS");
}

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
  app.add_option("--timeout", o.timeoutSeconds,
                 "Seconds to wait for each answer before giving up (default: 30)")
      ->type_name("SECONDS")
      ->check(secondsValidator());
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

using Groups = std::vector<std::unique_ptr<CommandGroup>>;

Groups declareGroups(CLI::App& app, bool shellLine) {
  auto groups = CommandGroups::all();
  std::erase_if(groups, [&](const auto& group) { return shellLine && !group->inShell(); });
  for (auto& group : groups) group->declare(app);
  return groups;
}

// `qvk hc bogus`: CLI11 only says that hc needs a command, as if none was
// given. The message for a command that is none of its group's (or qvk's).
std::optional<std::string> unknownCommand(CLI::App& root) {
  std::string group;  // "hc"; empty for the program itself
  CLI::App* app = &root;
  while (!app->get_subcommands().empty()) {
    app = app->get_subcommands().front();
    group += (group.empty() ? "" : " ") + app->get_name();
  }
  const auto left = app->remaining();
  if (app->get_require_subcommand_min() == 0 || left.empty() || left.front().starts_with('-')) {
    return std::nullopt;
  }
  return "'" + left.front() + "' is not a command of '" +
         (group.empty() ? root.get_name() : group) + "'";
}

// What CLI11 prints for `error`: help text, or the error and where to look.
std::string message(CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream out;
  app.exit(error, out, out);
  return out.str();
}

// Help (status 0) or a usage error (status 2) instead of a command.
void refuse(CLI::App& app, const CLI::ParseError& error, ParseOutcome& outcome) {
  const bool help = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
  outcome.exitCode = help ? 0 : 2;
  const auto unknown = help ? std::nullopt : unknownCommand(app);
  outcome.message = unknown ? message(app, CLI::ExtrasError(*unknown, CLI::ExitCodes::ExtrasError))
                            : message(app, error);
}

// A URL the libraries cannot use would only fail later, with an error about
// a request; refused here it is a usage error that names the option.
void checkUrl(CLI::App& app, ParseOutcome& outcome) {
  const auto& text = outcome.options.url;
  if (!text) return;
  const auto url = quorvel::platform::Url::make(*text);
  if (url && (url->scheme() == "http" || url->scheme() == "https") && !url->host().empty()) return;
  outcome.exitCode = 2;
  outcome.message = message(
      app, CLI::ValidationError("--url", "\"" + *text +
                                             "\" is not an http or https URL with a host, such "
                                             "as http://127.0.0.1:8080"));
}

// CLI11 writes into `outcome` and the groups through the bindings made before.
void run(CLI::App& app, std::vector<std::string> args, Groups& groups, ParseOutcome& outcome) {
  std::reverse(args.begin(), args.end());  // CLI11 takes them last-first
  try {
    app.parse(args);
  } catch (const CLI::ParseError& error) {
    return refuse(app, error, outcome);
  }
  for (auto& group : groups) {
    if (group->given().empty()) continue;
    outcome.command = std::move(group);
    return;
  }
  outcome.exitCode = 2;
  outcome.message = "error: no command given\n" + app.help();
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
  auto groups = declareGroups(app, false);
  run(app, args, groups, outcome);
  if (outcome.shouldRun()) checkUrl(app, outcome);
  return outcome;
}

ParseOutcome CommandLine::parseCommand(const std::vector<std::string>& words) {
  std::vector<std::string> args = words;
  if (!args.empty() && args.front() == "qvk") args.erase(args.begin());
  ParseOutcome outcome;
  CLI::App app{"Commands of a qvk shell session (global options go to `qvk shell` itself)", "qvk"};
  app.require_subcommand(1);
  auto groups = declareGroups(app, true);
  run(app, std::move(args), groups, outcome);
  return outcome;
}

}  // namespace qvk
