#include "quorvel/platform/device_info.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
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
  if (uname(&info) == 0) facts.machine = info.machine;
  facts.osVersion = DeviceInfo::systemVersion();
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

std::optional<std::string> DeviceInfo::osReleaseVersion(std::string_view osRelease) {
  constexpr std::string_view kKey = "VERSION_ID=";
  std::string line;
  std::istringstream lines{std::string(osRelease)};
  while (std::getline(lines, line)) {
    if (!line.starts_with(kKey)) continue;
    std::string value = line.substr(kKey.size());
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
        value.back() == value.front()) {
      value = value.substr(1, value.size() - 2);
    }
    if (value.empty()) return std::nullopt;
    return value;
  }
  return std::nullopt;
}

std::string DeviceInfo::systemVersion() {
  for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
    std::ifstream in(file);
    if (!in) continue;
    std::ostringstream text;
    text << in.rdbuf();
    if (auto version = osReleaseVersion(text.str())) return *version;
  }
  utsname info{};
  return uname(&info) == 0 ? std::string(info.release) : std::string();
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
