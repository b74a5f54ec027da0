#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "quorvel/log_level.h"

namespace quorvel {

// The process-wide logger of the core library and of the libraries above it.
// Every line passes a level threshold and is scrubbed of credentials (bearer
// tokens, JWTs, access-token fields) before it reaches the sink, so no caller
// can leak a token by logging a header or a body. Safe from any thread.
class CoreLogger {
 public:
  // Receives lines that passed the threshold, already scrubbed.
  using Sink = std::function<void(LogLevel level, std::string_view message)>;

  static void verbose(std::string_view message);
  static void debug(std::string_view message);
  static void info(std::string_view message);
  static void warn(std::string_view message);
  static void error(std::string_view message);
  static void log(LogLevel level, std::string_view message);

  static void setLevel(LogLevel level);
  static LogLevel level();
  static bool enabled(LogLevel level);
  // An empty sink restores the default: standard error, with time and level.
  static void setSink(Sink sink);

  // Replaces credentials in `text` with "<redacted>".
  static std::string scrub(std::string_view text);

  // Default level (info) and sink, for tests.
  static void resetForTesting();
};

using QVKClassicCoreLogger = CoreLogger;

}  // namespace quorvel
