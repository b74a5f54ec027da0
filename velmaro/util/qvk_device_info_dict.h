#pragma once

#include <string>

#include <boost/json/object.hpp>

namespace velmaro {

// The device as the service's analytics see it. The values come from
// quorvel::platform::DeviceInfo (its test override included); the platform
// and maker names are the fixed texts the service expects from this library.
// Stateless; safe from any thread.
class QVKDeviceInfoDict {
 public:
  // {"platform", "sys_locale", "manufacturer", "os", "model"}, all strings.
  static boost::json::object getDeviceInfoDict();
  // The system's version (os-release's VERSION_ID, e.g. "12").
  static std::string getDeviceOS();
  // The kernel's machine identifier (uname's machine field, e.g. "x86_64").
  static std::string getDeviceTypeNumber();
  // The user's first preferred language ("en-US"); "(null)" when there is none.
  static std::string getSystemLocale();
  static std::string getDeviceManufacturer() { return "Apple"; }
  static std::string getPlatform() { return "iOS"; }
};

}  // namespace velmaro
