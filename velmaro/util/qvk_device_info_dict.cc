#include "velmaro/util/qvk_device_info_dict.h"

#include <optional>

#include "quorvel/platform/device_info.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

using quorvel::platform::DeviceInfo;

boost::json::object QVKDeviceInfoDict::getDeviceInfoDict() {
  return {
      {"platform", getPlatform()},
      {"sys_locale", getSystemLocale()},
      {"manufacturer", getDeviceManufacturer()},
      {"os", getDeviceOS()},
      {"model", getDeviceTypeNumber()},
  };
}

std::string QVKDeviceInfoDict::getDeviceOS() {
  return DeviceInfo::osVersion();
}

std::string QVKDeviceInfoDict::getDeviceTypeNumber() {
  return DeviceInfo::machine();
}

std::string QVKDeviceInfoDict::getSystemLocale() {
  const auto languages = DeviceInfo::preferredLanguages();
  std::optional<std::string> first;
  if (!languages.empty()) first = languages.front();
  return Describe::of(first);
}

}  // namespace velmaro
