#pragma once

namespace quorvel {

// Severity of a log line, from the chattiest to the most serious. A logger
// set to a level writes that level and everything more serious.
enum class LogLevel { verbose = 0, debug = 1, info = 2, warn = 3, error = 4, off = 5 };

// "VERBOSE", "DEBUG", "INFO", "WARN", "ERROR" (and "OFF").
const char* logLevelName(LogLevel level);

}  // namespace quorvel
