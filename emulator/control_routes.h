#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// Scenario controls under /_emulator/, for tests and demos: agent replies,
// settings switches, what the client sent (blips, article views, stored
// requests) and scripted faults. JSON in, JSON out.
class ControlRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
