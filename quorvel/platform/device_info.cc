#include "quorvel/platform/device_info.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <sstream>

#include <sys/utsname.h>

namespace quorvel::platform {
namespace {

std::mutex& overrideMutex() {
  static std::mutex m;
  return m;
}

std::optional<DeviceFacts>& overrideSlot() {
  static std::optional<DeviceFacts> facts;
  return facts;
}

DeviceFacts systemFacts() {
  DeviceFacts facts;
  utsname info{};
  if (uname(&info) == 0) {
    facts.osVersion = info.release;
    facts.machine = info.machine;
  }
  facts.preferredLanguages = DeviceInfo::languagesFromEnvironment();
  return facts;
}

const char* env(const char* name) {
  // The environment is read, never written, by this library.
  const char* v = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
  return (v != nullptr && *v != '\0') ? v : nullptr;
}

}  // namespace

DeviceFacts DeviceInfo::current() {
  {
    std::lock_guard lock(overrideMutex());
    if (overrideSlot()) return *overrideSlot();
  }
  // The system facts do not change while the process runs.
  static const DeviceFacts facts = systemFacts();
  return facts;
}

void DeviceInfo::setOverride(std::optional<DeviceFacts> facts) {
  std::lock_guard lock(overrideMutex());
  overrideSlot() = std::move(facts);
}

std::optional<std::string> DeviceInfo::languageTag(const std::string& posixLocale) {
  std::string name = posixLocale;
  // Drop the codeset and modifier: "de_CH.UTF-8@euro" -> "de_CH".
  name = name.substr(0, name.find_first_of(".@"));
  if (name.empty() || name == "C" || name == "POSIX") return std::nullopt;
  std::replace(name.begin(), name.end(), '_', '-');
  return name;
}

std::vector<std::string> DeviceInfo::languagesFromEnvironment() {
  std::vector<std::string> tags;
  auto add = [&tags](const std::string& locale) {
    if (auto tag = languageTag(locale);
        tag && std::find(tags.begin(), tags.end(), *tag) == tags.end()) {
      tags.push_back(*tag);
    }
  };
  // LANGUAGE is only honoured when a real locale is set, as gettext does.
  const char* primary = env("LC_ALL");
  if (primary == nullptr) primary = env("LC_MESSAGES");
  if (primary == nullptr) primary = env("LANG");
  if (const char* list = env("LANGUAGE"); list != nullptr && primary != nullptr) {
    std::stringstream stream(list);
    std::string item;
    while (std::getline(stream, item, ':')) add(item);
  }
  if (primary != nullptr) add(primary);
  if (tags.empty()) tags.emplace_back("en-US");
  return tags;
}

}  // namespace quorvel::platform
