#pragma once

#include <optional>
#include <string>

#include <boost/json/object.hpp>

namespace velmaro {

// The device and the languages in force, for the metadata that a new request
// carries. Stateless; safe from any thread.
class QVKDeviceInfo {
 public:
  // The kernel's machine identifier (uname's machine field).
  static std::string deviceType();
  // The user's first preferred language; empty when there is none.
  static std::string region();
  // The language the library's texts are shown in: the first preferred
  // localization of its strings bundle (where the resource bundle keeps its
  // localized tables), else of the resource bundle itself. Nothing when the
  // bundle is missing or has no localization the user can read.
  static std::optional<std::string> language();
  // {"device_os": the system's version, "device_model": deviceType()}.
  static boost::json::object deviceInfoDictionary();
};

}  // namespace velmaro
