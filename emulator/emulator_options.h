#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvk::emulator {

// Everything the command line can set. The defaults are those of a plain
// `qvk-emulator` run: sample data in memory, every feature on.
struct EmulatorOptions {
  std::string host = "127.0.0.1";
  int port = 0;  // 0: a free port chosen by the kernel
  std::string dbPath = ":memory:";
  std::string seed = "sample";  // "sample" or "empty"
  bool conversations = true;
  bool attachments = true;
  bool ticketForms = true;
  bool voting = true;
  std::string helpCenterLocale = "en-us";
  std::vector<std::string> contactUsTags;
  bool helpCenterRestricted = false;
  int latencyMs = 0;
  int helpCenterMaxAge = 60;  // seconds, in X-QV-Cache-Control
  int threads = 320;          // worker threads: one per open keep-alive connection
  std::int64_t maxAttachmentSize = 20 * 1024 * 1024;
  bool quiet = false;
};

}  // namespace qvk::emulator
