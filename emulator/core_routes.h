#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// The core library's own endpoints: the access-token exchange (anonymous and
// JWT), the settings document and the analytics blips.
class CoreRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
