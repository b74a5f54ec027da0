#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// Ticket forms by id with their fields side-loaded.
class TicketFormRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
