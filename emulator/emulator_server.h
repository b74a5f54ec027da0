#pragma once

#include <memory>
#include <string>
#include <thread>

#include "emulator/emulator_options.h"

namespace qvk::emulator {

class Database;
class IdentityStore;
class SettingsState;
class FaultInjector;
class TunedHttpServer;
struct EmulatorContext;

// The whole emulator: the database (created and seeded as the options say),
// the routes, and the HTTP server running on its own threads.
class EmulatorServer {
 public:
  explicit EmulatorServer(EmulatorOptions options);
  ~EmulatorServer();
  EmulatorServer(const EmulatorServer&) = delete;
  EmulatorServer& operator=(const EmulatorServer&) = delete;

  // Opens the database, binds and starts serving in the background. False
  // with a reason in `error` when the database or the port cannot be opened.
  bool start(std::string& error);
  // Stops serving and waits for the server thread; safe to call twice.
  void stop();

  int port() const { return port_; }
  // "http://127.0.0.1:<port>"
  std::string baseUrl() const;
  const EmulatorOptions& options() const { return options_; }

 private:
  void installHandlers();

  EmulatorOptions options_;
  std::unique_ptr<Database> db_;
  std::unique_ptr<IdentityStore> identities_;
  std::unique_ptr<SettingsState> settings_;
  std::unique_ptr<FaultInjector> faults_;
  std::unique_ptr<EmulatorContext> context_;
  std::unique_ptr<TunedHttpServer> http_;
  std::thread thread_;
  int port_ = -1;
};

}  // namespace qvk::emulator
