#include "quorvel/platform/user_defaults.h"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <system_error>

namespace quorvel::platform {
namespace {

std::mutex& standardMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<UserDefaults>& standardSlot() {
  static std::shared_ptr<UserDefaults> slot;
  return slot;
}

std::string programName() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  return ec ? std::string("quorvel") : exe.filename().string();
}

const char* env(const char* name) {
  const char* v = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read-only use
  return (v != nullptr && *v != '\0') ? v : nullptr;
}

}  // namespace

std::shared_ptr<UserDefaults> UserDefaults::standard() {
  std::lock_guard lock(standardMutex());
  if (!standardSlot()) standardSlot() = std::make_shared<UserDefaults>(defaultPath());
  return standardSlot();
}

void UserDefaults::setStandardPath(std::filesystem::path file) {
  auto store = std::make_shared<UserDefaults>(std::move(file));
  std::lock_guard lock(standardMutex());
  standardSlot() = std::move(store);
}

std::filesystem::path UserDefaults::defaultPath() {
  std::filesystem::path base;
  if (const char* xdg = env("XDG_CONFIG_HOME")) {
    base = xdg;
  } else if (const char* home = env("HOME")) {
    base = std::filesystem::path(home) / ".config";
  } else {
    base = std::filesystem::temp_directory_path();
  }
  return base / programName() / "UserDefaults.sqlite";
}

UserDefaults::UserDefaults(std::filesystem::path file)
    : JsonKeyValueStore(std::move(file), "defaults", [](std::string_view line) {
        std::fprintf(stderr, "UserDefaults: %.*s\n", static_cast<int>(line.size()), line.data());
      }) {}

}  // namespace quorvel::platform
