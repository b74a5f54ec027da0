// qvk-emulator: serves the hosted service's HTTP API on loopback until
// SIGINT or SIGTERM.
#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>

#include <CLI/CLI.hpp>
#include <pthread.h>

#include "emulator/demo_identity.h"
#include "emulator/emulator_options.h"
#include "emulator/emulator_server.h"

namespace {

using qvk::emulator::EmulatorOptions;

std::string footer() {
  return std::string(
             "Identity:\n"
             "  Anonymous and JWT access-token exchanges are accepted. A JWT needs three\n"
             "  base64url parts whose payload is a JSON object with \"email\" (and \"name\");\n"
             "  its signature is NOT checked: the emulator is for offline tests only.\n"
             "  Demo user \"Demo User\" <demo@example.com> (with --seed sample), JWT:\n    ") +
         std::string(qvk::emulator::kDemoJwt) +
         "\n\nScenario controls (JSON in, JSON out):\n"
         "  GET  /_emulator/health                 liveness\n"
         "  GET  /_emulator/demo_identity          the demo JWT\n"
         "  GET|PUT /_emulator/settings            settings switches "
         "{\"conversations\":false,...}\n"
         "  POST /_emulator/requests/<id>/comments agent reply {\"body\":..., \"author_id\":...,\n"
         "                                         \"status\":...}\n"
         "  GET  /_emulator/requests/<id>          a request as stored (tags, metadata)\n"
         "  GET|DELETE /_emulator/blips            blips received\n"
         "  GET  /_emulator/article_views          article views received\n"
         "  POST /_emulator/faults                 {\"count\":N, \"status\":503, \"delay_ms\":0,\n"
         "                                         \"drop\":false, \"malformed\":false,\n"
         "                                         \"path_prefix\":\"/api/...\"}\n"
         "  GET|DELETE /_emulator/faults           list / reset faults\n";
}

void addOptions(CLI::App& app, EmulatorOptions& o) {
  auto onOff = CLI::IsMember({"on", "off"});
  app.add_option("--port", o.port, "Port on 127.0.0.1 (0: a free port)")
      ->check(CLI::Range(0, 65535));
  app.add_option("--db", o.dbPath, "SQLite file to keep the data in (default: in memory)");
  app.add_option("--seed", o.seed, "Initial data: sample or empty")
      ->check(CLI::IsMember({"sample", "empty"}));
  auto toggle = [&](const char* name, bool& target, const char* help) {
    app.add_option_function<std::string>(
           name, [&target](const std::string& v) { target = v == "on"; }, help)
        ->check(onOff);
  };
  toggle("--conversations", o.conversations, "Conversations (requests) on|off");
  toggle("--attachments", o.attachments, "Attachments on|off");
  toggle("--ticket-forms", o.ticketForms, "Ticket forms on|off");
  toggle("--voting", o.voting, "Help Center article voting on|off");
  app.add_option("--hc-locale", o.helpCenterLocale, "Help Center locale in the settings");
  app.add_option("--contact-us-tags", o.contactUsTags, "Contact-us tags, comma-separated")
      ->delimiter(',');
  app.add_flag("--help-center-restricted", o.helpCenterRestricted,
               "Help Center reads need a JWT user's token");
  app.add_option("--latency-ms", o.latencyMs, "Delay before every service answer")
      ->check(CLI::Range(0, 60000));
  app.add_option("--hc-max-age", o.helpCenterMaxAge, "max-age in X-QV-Cache-Control (seconds)")
      ->check(CLI::Range(0, 86400));
  app.add_option("--threads", o.threads, "Worker threads (one per open connection)")
      ->check(CLI::Range(8, 4096));
  app.add_flag("--quiet", o.quiet, "Do not log requests");
}

}  // namespace

int main(int argc, char** argv) {
  EmulatorOptions options;
  CLI::App app{"qvk-emulator: the service's HTTP API on loopback, for demos and offline tests"};
  addOptions(app, options);
  app.footer(footer());
  CLI11_PARSE(app, argc, argv);

  // Every thread the server starts inherits this mask, so the signals reach
  // only sigwait() below.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  qvk::emulator::EmulatorServer server(options);
  std::string error;
  if (!server.start(error)) {
    std::cerr << "qvk-emulator: " << error << "\n";
    return 1;
  }
  std::printf("%s\n", server.baseUrl().c_str());
  std::fflush(stdout);
  if (!options.quiet)
    std::fprintf(stderr, "qvk-emulator: serving on %s\n", server.baseUrl().c_str());

  int received = 0;
  sigwait(&signals, &received);
  if (!options.quiet) std::fprintf(stderr, "qvk-emulator: stopping (signal %d)\n", received);
  server.stop();
  return 0;
}
