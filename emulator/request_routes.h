#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// The end user's support requests: create, list (own requests for a signed-in
// user, show_many by ids for an anonymous one), show, comments and replies.
class RequestRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
