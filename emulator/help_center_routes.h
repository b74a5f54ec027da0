#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// The knowledge base endpoints: categories, sections, articles (by section,
// by labels, flat and paged, by id), search, deflection suggestions, the
// article tree, attachments, votes and article-view statistics.
class HelpCenterRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
