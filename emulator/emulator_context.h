#pragma once

#include "emulator/emulator_options.h"

namespace qvk::emulator {

class Database;
class IdentityStore;
class SettingsState;
class FaultInjector;

// What every group of routes works on. The server owns all of it and outlives
// the handlers.
struct EmulatorContext {
  const EmulatorOptions& options;
  Database& db;
  IdentityStore& identities;
  SettingsState& settings;
  FaultInjector& faults;
};

}  // namespace qvk::emulator
