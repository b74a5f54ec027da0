#include "velmaro/util/qvk_device_info.h"

#include <memory>

#include "quorvel/platform/bundle.h"
#include "quorvel/platform/device_info.h"
#include "velmaro/util/qvk_bundle_utils.h"

namespace velmaro {
namespace {

using quorvel::platform::Bundle;
using quorvel::platform::DeviceInfo;

std::optional<std::string> firstLocalization(const std::shared_ptr<Bundle>& bundle) {
  if (!bundle) return std::nullopt;
  const auto localizations = bundle->preferredLocalizations();
  if (localizations.empty()) return std::nullopt;
  return localizations.front();
}

}  // namespace

std::string QVKDeviceInfo::deviceType() {
  return DeviceInfo::machine();
}

std::string QVKDeviceInfo::region() {
  const auto languages = DeviceInfo::preferredLanguages();
  return languages.empty() ? std::string() : languages.front();
}

std::optional<std::string> QVKDeviceInfo::language() {
  if (auto strings = firstLocalization(QVKBundleUtils::frameworkStringsBundle())) return strings;
  return firstLocalization(QVKBundleUtils::frameworkResourceBundle());
}

boost::json::object QVKDeviceInfo::deviceInfoDictionary() {
  return {{"device_os", DeviceInfo::osVersion()}, {"device_model", deviceType()}};
}

}  // namespace velmaro
