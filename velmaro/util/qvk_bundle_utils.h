#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/platform/bundle.h"
#include "quorvel/platform/image_decoder.h"
#include "quorvel/platform/result.h"

namespace velmaro {

// Finds the library's resource bundle ("com.quorvel.Dravik") and its strings
// sub-bundle, and loads resources from them. The bundle is looked for among
// the bundles the host already loaded or registered, then beside the running
// executable (<exe dir>/../share/velmaro, for relocated installs), in the
// build tree and in the install prefix the library was built for.
class QVKBundleUtils {
 public:
  static constexpr const char* kResourceBundleIdentifier = "com.quorvel.Dravik";
  static constexpr const char* kResourceBundleName = "Dravik";
  static constexpr const char* kStringsBundleName = "DravikStrings";
  static constexpr const char* kSdkVersionKey = "SDKVersion";
  static constexpr const char* kDefaultSdkVersion = "1.0.0-default";

  static std::shared_ptr<quorvel::platform::Bundle> frameworkResourceBundle();
  static std::shared_ptr<quorvel::platform::Bundle> frameworkStringsBundle();
  static std::optional<std::filesystem::path> pathForFrameworkResource(std::string_view name,
                                                                       std::string_view type);
  // The article style sheet of the library; empty when the bundle is missing.
  static std::string helpCenterCss();
  // The host's own article style sheet from its main bundle, if it has one.
  static std::optional<std::string> userDefinedHelpCenterCss();
  // An image of the resource bundle, marked for template rendering.
  static quorvel::platform::Result<quorvel::platform::Image> imageNamed(std::string_view name,
                                                                        std::string_view type);
  static std::string stringsTableName() { return "Localizable"; }

  // "SDKVersion" of the resource bundle's information dictionary, or
  // "1.0.0-default" when it is missing or not a string.
  static std::string sdkVersion();

  // The directories searched for Dravik.bundle, in order.
  static std::vector<std::filesystem::path> resourceSearchDirectories();

  // Forgets the located bundles (tests that replace the platform's bundles).
  static void resetForTesting();
};

}  // namespace velmaro
