#pragma once

#include <filesystem>
#include <memory>

#include "quorvel/platform/json_key_value_store.h"

namespace quorvel::platform {

// A persistent key-value store of JSON values, the way a phone OS keeps an
// app's preferences: a JsonKeyValueStore (table "defaults") whose problems
// are written to standard error, and a process-wide instance. Safe from any
// thread.
class UserDefaults final : public JsonKeyValueStore {
 public:
  // The process-wide store. Its file is defaultPath() unless the host chose
  // another with setStandardPath() before first use.
  static std::shared_ptr<UserDefaults> standard();
  // Replaces the standard store with one at `file` (hosts at start-up, tests).
  static void setStandardPath(std::filesystem::path file);
  // $XDG_CONFIG_HOME (or ~/.config)/<program name>/UserDefaults.sqlite
  static std::filesystem::path defaultPath();

  // Opens or creates the store. A file that is not a readable database is
  // moved aside and a fresh one made; if no file can be made at all the store
  // works in memory only and set() reports false.
  explicit UserDefaults(std::filesystem::path file);
};

}  // namespace quorvel::platform
