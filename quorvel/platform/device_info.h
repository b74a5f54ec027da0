#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::platform {

// Facts about the device that a phone OS hands an app: OS version, hardware
// identifier, the user's preferred languages. Read from the running system;
// tests replace them with setOverride().
struct DeviceFacts {
  std::string osVersion;                        // e.g. "12"
  std::string machine;                          // e.g. "x86_64"
  std::vector<std::string> preferredLanguages;  // BCP-47, most preferred first
};

class DeviceInfo {
 public:
  // The facts in force: the override if one is set, else the system's.
  static DeviceFacts current();
  static std::string osVersion() { return current().osVersion; }
  static std::string machine() { return current().machine; }
  static std::vector<std::string> preferredLanguages() { return current().preferredLanguages; }

  static void setOverride(std::optional<DeviceFacts> facts);

  // The user's languages from the process locale: LANGUAGE (a colon-separated
  // list), else LC_ALL, LC_MESSAGES, LANG; "C" and "POSIX" mean en-US.
  // "de_CH.UTF-8" becomes "de-CH". Never empty.
  static std::vector<std::string> languagesFromEnvironment();
  // One POSIX locale name to a BCP-47 tag, or nothing for C/POSIX/empty.
  static std::optional<std::string> languageTag(const std::string& posixLocale);

  // The system's version as a user would name it: VERSION_ID of os-release
  // (/etc/os-release, else /usr/lib/os-release), as a phone names its OS
  // release rather than its kernel's; the kernel release (uname) on systems
  // without one.
  static std::string systemVersion();
  // VERSION_ID of an os-release text, unquoted; nothing when absent or empty.
  static std::optional<std::string> osReleaseVersion(std::string_view osRelease);
};

}  // namespace quorvel::platform
