#pragma once

#include <optional>
#include <string>

namespace qvk {

// The options that come before the command and hold for the whole process
// (and for every command of a shell session).
struct GlobalOptions {
  std::optional<std::string> url;
  std::string appId = "demo";
  std::string clientId = "demo";
  // A JWT identity when set; otherwise anonymous with the optional name and email.
  std::optional<std::string> jwt;
  std::optional<std::string> name;
  std::optional<std::string> email;
  // The Help Center locale override.
  std::optional<std::string> locale;
  // Absent: the core library's per-user default folder.
  std::optional<std::string> dataDir;
  bool json = false;
  // Seconds a command waits for its answer (more than 0); fractions allowed.
  double timeoutSeconds = 30;
  // Number of -v: 0 quiet, 1 info, 2 debug, 3 or more verbose.
  int verbosity = 0;
};

}  // namespace qvk
