#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/object.hpp>

namespace velmaro {

// Whether the host runs under a development or a production provisioning
// profile, from the property list inside "embedded.mobileprovision" in the
// host's main bundle. The profile is read once per process, on the first
// call from any thread, and kept (also when there is none); safe from any
// thread.
class QVKMobileProvisionAnalyzer {
 public:
  static constexpr const char* kDevelopment = "Development";
  static constexpr const char* kProduction = "Production";
  // Real profiles are tens of kilobytes; a larger file is not read.
  static constexpr std::size_t kMaxProfileBytes = 1024 * 1024;

  // "Development" or "Production" for getMobileProvisionPlist(), by
  // environmentFor().
  static std::string getEnvironment();
  // The profile's dictionary; empty when the bundle has no profile; nothing
  // when the file cannot be read (or is too large) or holds no dictionary.
  static std::optional<boost::json::object> getMobileProvisionPlist();

  // The profile file's bytes to its dictionary: everything from the first
  // "<plist" on, parsed as a property list. Nothing when there is no
  // "<plist", the bytes exceed kMaxProfileBytes, or the root is not a
  // dictionary. Pure; any bytes are safe.
  static std::optional<boost::json::object> plistFromProfileBytes(std::string_view bytes);
  // No profile or an empty one, or "ProvisionsAllDevices" true: development.
  // No devices in "ProvisionedDevices" (or not a list): production.
  // Otherwise development, whatever "get-task-allow" says.
  static std::string environmentFor(const std::optional<boost::json::object>& profile);

  // Forgets the profile read so far (tests).
  static void resetForTesting();
};

}  // namespace velmaro
