#pragma once

#include <httplib.h>

#include "emulator/emulator_context.h"

namespace qvk::emulator {

// File uploads (raw bytes in, a token out), their removal, and the download
// of uploaded content at the attachment's content_url.
class UploadRoutes {
 public:
  static void install(httplib::Server& server, EmulatorContext& ctx);
};

}  // namespace qvk::emulator
