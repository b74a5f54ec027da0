#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

#include "quorvel/core_logger.h"
#include "quorvel/platform/main_queue.h"
#include "quorvel/platform/user_defaults.h"

namespace quorvel {

struct QuorvelOptions {
  // Where callbacks run. Without one, Quorvel makes a SerialThreadQueue.
  std::shared_ptr<platform::MainQueue> mainQueue;
  // Where the session store, HTTP cache and blip queue live. Default:
  // $XDG_DATA_HOME (or ~/.local/share)/quorvel/<app id>.
  std::optional<std::filesystem::path> dataDirectory;
  // Where the anonymous guid is mirrored, so that a lost session store does
  // not orphan the anonymous user's requests. Default: UserDefaults::standard().
  std::shared_ptr<platform::UserDefaults> userDefaults;
  LogLevel logLevel = LogLevel::info;
  // Replaces the logger's sink when given.
  CoreLogger::Sink logSink;
  std::chrono::milliseconds connectTimeout{10'000};
  std::chrono::milliseconds requestTimeout{60'000};
  std::size_t maxResponseBytes = 32u * 1024u * 1024u;
  // How long past its freshness a stored GET answer may still stand in for
  // the service when the service cannot be reached (no connection, host not
  // found, offline, time-out). Zero: never.
  std::chrono::seconds maxStaleAge{std::chrono::hours(24 * 30)};
  // How long send() waits for more blips before a batch leaves.
  std::chrono::milliseconds blipDelay{500};
};

}  // namespace quorvel
