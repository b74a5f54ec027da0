#include "quorvel/core_logger.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>

#include <fmt/format.h>

namespace quorvel {
namespace {

constexpr std::string_view kRedacted = "<redacted>";

std::atomic<LogLevel>& threshold() {
  static std::atomic<LogLevel> level{LogLevel::info};
  return level;
}

std::mutex& sinkMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<const CoreLogger::Sink>& sinkSlot() {
  static std::shared_ptr<const CoreLogger::Sink> slot;
  return slot;
}

void writeToStandardError(LogLevel level, std::string_view message) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto millis =
      std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &utc);
  // One fprintf per line so that lines of different threads do not interleave.
  std::fprintf(stderr, "%s.%03dZ [%s] %.*s\n", stamp, static_cast<int>(millis), logLevelName(level),
               static_cast<int>(message.size()), message.data());
}

bool isTokenChar(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '.' || c == '~' || c == '+' || c == '/' || c == '=';
}

bool isBase64UrlChar(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '_' || c == '=';
}

bool startsWithNoCase(std::string_view text, std::size_t at, std::string_view prefix) {
  if (text.size() - at < prefix.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    char c = text[at + i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != prefix[i]) return false;
  }
  return true;
}

// Length of a JWT (three base64url parts joined by dots, whose header starts
// with "eyJ", the encoding of '{"') beginning at `at`, or 0.
std::size_t jwtLengthAt(std::string_view text, std::size_t at) {
  if (text.compare(at, 3, "eyJ") != 0) return 0;
  // Inside a longer word it is not a token of its own ("key=eyJ..." is).
  if (at > 0 && isBase64UrlChar(text[at - 1]) && text[at - 1] != '=') return 0;
  std::size_t i = at;
  int dots = 0;
  while (i < text.size() && (isBase64UrlChar(text[i]) || text[i] == '.')) {
    if (text[i] == '.') ++dots;
    ++i;
  }
  return dots >= 2 ? i - at : 0;
}

// Length of the run of token characters after "Bearer " at `at`, including
// the prefix, or 0.
std::size_t bearerLengthAt(std::string_view text, std::size_t at) {
  constexpr std::string_view kBearer = "bearer";
  if (!startsWithNoCase(text, at, kBearer)) return 0;
  std::size_t i = at + kBearer.size();
  const std::size_t spaces = i;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  if (i == spaces) return 0;
  const std::size_t tokenStart = i;
  while (i < text.size() && isTokenChar(text[i])) ++i;
  return i > tokenStart ? i - at : 0;
}

// Length of `"access_token"` `:` `"..."` at `at`, or 0.
std::size_t accessTokenFieldLengthAt(std::string_view text, std::size_t at) {
  constexpr std::string_view kKey = "\"access_token\"";
  if (text.compare(at, kKey.size(), kKey) != 0) return 0;
  std::size_t i = at + kKey.size();
  while (i < text.size() && (text[i] == ' ' || text[i] == ':')) ++i;
  if (i >= text.size() || text[i] != '"') return 0;
  ++i;
  while (i < text.size() && text[i] != '"') i += (text[i] == '\\') ? 2 : 1;
  return std::min(i + 1, text.size()) - at;
}

}  // namespace

const char* logLevelName(LogLevel level) {
  switch (level) {
    case LogLevel::verbose:
      return "VERBOSE";
    case LogLevel::debug:
      return "DEBUG";
    case LogLevel::info:
      return "INFO";
    case LogLevel::warn:
      return "WARN";
    case LogLevel::error:
      return "ERROR";
    case LogLevel::off:
      break;
  }
  return "OFF";
}

std::string CoreLogger::scrub(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    if (const auto n = bearerLengthAt(text, i); n > 0) {
      out += "Bearer ";
      out += kRedacted;
      i += n;
    } else if (const auto j = jwtLengthAt(text, i); j > 0) {
      out += kRedacted;
      i += j;
    } else if (const auto f = accessTokenFieldLengthAt(text, i); f > 0) {
      out += "\"access_token\":\"";
      out += kRedacted;
      out += '"';
      i += f;
    } else {
      out += text[i++];
    }
  }
  return out;
}

void CoreLogger::log(LogLevel level, std::string_view message) {
  if (!enabled(level)) return;
  const std::string clean = scrub(message);
  std::shared_ptr<const Sink> sink;
  {
    std::lock_guard lock(sinkMutex());
    sink = sinkSlot();
  }
  if (sink) {
    (*sink)(level, clean);
  } else {
    writeToStandardError(level, clean);
  }
}

void CoreLogger::verbose(std::string_view message) {
  log(LogLevel::verbose, message);
}
void CoreLogger::debug(std::string_view message) {
  log(LogLevel::debug, message);
}
void CoreLogger::info(std::string_view message) {
  log(LogLevel::info, message);
}
void CoreLogger::warn(std::string_view message) {
  log(LogLevel::warn, message);
}
void CoreLogger::error(std::string_view message) {
  log(LogLevel::error, message);
}

void CoreLogger::setLevel(LogLevel level) {
  threshold().store(level);
}
LogLevel CoreLogger::level() {
  return threshold().load();
}

bool CoreLogger::enabled(LogLevel level) {
  return level != LogLevel::off && static_cast<int>(level) >= static_cast<int>(threshold().load());
}

void CoreLogger::setSink(Sink sink) {
  auto shared = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
  std::lock_guard lock(sinkMutex());
  sinkSlot() = std::move(shared);
}

void CoreLogger::resetForTesting() {
  setLevel(LogLevel::info);
  setSink(nullptr);
}

}  // namespace quorvel
