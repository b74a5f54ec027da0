#include "velmaro/util/qvk_bundle_utils.h"

#include <fstream>
#include <mutex>
#include <sstream>

#include "quorvel/platform/error.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;
using quorvel::platform::Bundle;

struct Located {
  std::mutex mutex;
  std::shared_ptr<Bundle> resources;
  bool stringsSearched = false;
  std::shared_ptr<Bundle> strings;
};

Located& located() {
  static Located instance;
  return instance;
}

std::optional<std::string> readText(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream text;
  text << in.rdbuf();
  return std::move(text).str();
}

fs::path executableDirectory() {
  std::error_code ec;
  const auto exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::path() : exe.parent_path();
}

std::shared_ptr<Bundle> findResourceBundle() {
  if (auto known = Bundle::withIdentifier(QVKBundleUtils::kResourceBundleIdentifier)) return known;
  const std::string directoryName = std::string(QVKBundleUtils::kResourceBundleName) + ".bundle";
  for (const auto& directory : QVKBundleUtils::resourceSearchDirectories()) {
    auto bundle = Bundle::atPath(directory / directoryName);
    if (bundle && bundle->identifier() == QVKBundleUtils::kResourceBundleIdentifier) return bundle;
  }
  return nullptr;
}

}  // namespace

std::vector<fs::path> QVKBundleUtils::resourceSearchDirectories() {
  std::vector<fs::path> directories;
  if (auto exe = executableDirectory(); !exe.empty()) {
    directories.push_back((exe / ".." / "share" / "velmaro").lexically_normal());
  }
#ifdef VELMARO_BUILD_RESOURCE_DIR
  directories.emplace_back(VELMARO_BUILD_RESOURCE_DIR);
#endif
#ifdef VELMARO_INSTALL_RESOURCE_DIR
  directories.emplace_back(VELMARO_INSTALL_RESOURCE_DIR);
#endif
  return directories;
}

std::shared_ptr<Bundle> QVKBundleUtils::frameworkResourceBundle() {
  auto& state = located();
  std::lock_guard lock(state.mutex);
  // A miss is searched again next time: the host may register the bundle later.
  if (!state.resources) state.resources = findResourceBundle();
  return state.resources;
}

std::shared_ptr<Bundle> QVKBundleUtils::frameworkStringsBundle() {
  auto resources = frameworkResourceBundle();
  auto& state = located();
  std::lock_guard lock(state.mutex);
  if (!state.stringsSearched && resources) {
    state.strings = resources->childBundle(kStringsBundleName);
    state.stringsSearched = true;
  }
  return state.strings;
}

std::optional<fs::path> QVKBundleUtils::pathForFrameworkResource(std::string_view name,
                                                                 std::string_view type) {
  auto bundle = frameworkResourceBundle();
  if (!bundle) return std::nullopt;
  return bundle->pathForResource(name, type);
}

std::string QVKBundleUtils::helpCenterCss() {
  const auto path = pathForFrameworkResource("help_center_article_style", "css");
  if (!path) return {};
  return readText(*path).value_or(std::string());
}

std::optional<std::string> QVKBundleUtils::userDefinedHelpCenterCss() {
  const auto path = Bundle::main()->pathForResource("help_center_article_style", "css");
  if (!path) return std::nullopt;
  return readText(*path);
}

quorvel::platform::Result<quorvel::platform::Image> QVKBundleUtils::imageNamed(
    std::string_view name, std::string_view type) {
  const auto path = pathForFrameworkResource(name, type);
  const auto bytes = path ? readText(*path) : std::nullopt;
  if (!bytes) {
    return quorvel::platform::Error::withDescription(
        quorvel::platform::ImageDecoder::kErrorDomain,
        quorvel::platform::ImageDecoder::kUnsupported,
        "No image named " + std::string(name) + " in the resource bundle");
  }
  auto image = quorvel::platform::ImageDecoder::decode(*bytes);
  if (image) image->templateRendering = true;
  return image;
}

std::string QVKBundleUtils::sdkVersion() {
  auto bundle = frameworkResourceBundle();
  if (!bundle) return kDefaultSdkVersion;
  const auto* version = bundle->infoDictionary().if_contains(kSdkVersionKey);
  if (version == nullptr || !version->is_string()) return kDefaultSdkVersion;
  return std::string(version->get_string());
}

void QVKBundleUtils::resetForTesting() {
  auto& state = located();
  std::lock_guard lock(state.mutex);
  state.resources.reset();
  state.stringsSearched = false;
  state.strings.reset();
}

}  // namespace velmaro
