#pragma once

#include <string_view>

#include "quorvel/core_logger.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

// The logging entry point of the library's classic code. It has no sink,
// threshold or format of its own: every line goes to the core library's
// logger, which decides whether and where it is written.
class QVKClassicLogger {
 public:
  static void error(std::string_view message) { quorvel::QVKClassicCoreLogger::error(message); }
  static void warn(std::string_view message) { quorvel::QVKClassicCoreLogger::warn(message); }
  static void info(std::string_view message) { quorvel::QVKClassicCoreLogger::info(message); }
  static void debug(std::string_view message) { quorvel::QVKClassicCoreLogger::debug(message); }
  static void verbose(std::string_view message) { quorvel::QVKClassicCoreLogger::verbose(message); }

  // Format forms: the message is built with StringFormat ("%@" takes any value).
  template <class... Args>
  static void e(std::string_view format, const Args&... args) {
    logFormatted(quorvel::LogLevel::error, format, args...);
  }
  template <class... Args>
  static void w(std::string_view format, const Args&... args) {
    logFormatted(quorvel::LogLevel::warn, format, args...);
  }
  template <class... Args>
  static void i(std::string_view format, const Args&... args) {
    logFormatted(quorvel::LogLevel::info, format, args...);
  }
  template <class... Args>
  static void d(std::string_view format, const Args&... args) {
    logFormatted(quorvel::LogLevel::debug, format, args...);
  }
  template <class... Args>
  static void v(std::string_view format, const Args&... args) {
    logFormatted(quorvel::LogLevel::verbose, format, args...);
  }

 private:
  template <class... Args>
  static void logFormatted(quorvel::LogLevel level, std::string_view format, const Args&... args) {
    // Formatting is skipped for lines the threshold would drop anyway.
    if (!quorvel::QVKClassicCoreLogger::enabled(level)) return;
    quorvel::QVKClassicCoreLogger::log(level, StringFormat::format(format, args...));
  }
};

}  // namespace velmaro
