#include "velmaro/util/qvk_mobile_provision_analyzer.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "quorvel/platform/bundle.h"
#include "quorvel/platform/property_list.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;

struct Profile {
  std::mutex mutex;
  bool read = false;
  std::optional<boost::json::object> plist;
};

Profile& profile() {
  static Profile instance;
  return instance;
}

// A regular file of at most the limit; a FIFO or a device would block or
// never end, a huge file is not a profile.
std::optional<std::string> readProfileFile(const fs::path& file) {
  std::error_code ec;
  if (!fs::is_regular_file(file, ec)) return std::nullopt;
  const auto size = fs::file_size(file, ec);
  if (ec || size > QVKMobileProvisionAnalyzer::kMaxProfileBytes) return std::nullopt;
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  std::string bytes(std::istreambuf_iterator<char>(in), {});
  if (bytes.size() > QVKMobileProvisionAnalyzer::kMaxProfileBytes) return std::nullopt;
  return bytes;
}

std::optional<boost::json::object> loadProfile() {
  const auto path =
      quorvel::platform::Bundle::main()->pathForResource("embedded", "mobileprovision");
  if (!path) return boost::json::object{};
  const auto bytes = readProfileFile(*path);
  if (!bytes) return std::nullopt;
  return QVKMobileProvisionAnalyzer::plistFromProfileBytes(*bytes);
}

bool isTrue(const boost::json::value* value) {
  if (value == nullptr) return false;
  if (value->is_bool()) return value->get_bool();
  if (value->is_int64()) return value->get_int64() != 0;
  if (value->is_double()) return value->get_double() != 0;
  return false;
}

bool hasDevices(const boost::json::value* devices) {
  return devices != nullptr && devices->is_array() && !devices->get_array().empty();
}

}  // namespace

std::optional<boost::json::object> QVKMobileProvisionAnalyzer::plistFromProfileBytes(
    std::string_view bytes) {
  if (bytes.size() > kMaxProfileBytes) return std::nullopt;
  // The file is read as ISO Latin-1, where each byte is one character, so
  // the text is the bytes themselves. The payload is the XML between the
  // signature's wrapping: the text from "<plist" on. Its end is looked for as
  // the literal "%@</plist>", which never occurs, so the whole remainder is
  // parsed, signature bytes after the root included; libplist stops reading
  // at the root's end.
  const auto start = bytes.find("<plist");
  if (start == std::string_view::npos) return std::nullopt;
  auto remainder = bytes.substr(start);
  if (const auto end = remainder.find("%@</plist>"); end != std::string_view::npos) {
    remainder = remainder.substr(0, end);
  }
  auto root = quorvel::platform::PropertyList::parse(remainder);
  if (!root || !root->is_object()) return std::nullopt;
  return std::move(root->as_object());
}

std::string QVKMobileProvisionAnalyzer::environmentFor(
    const std::optional<boost::json::object>& plist) {
  // A host without a profile (a store build, or any desktop program) is
  // taken for a development one: the service has always answered so.
  if (!plist || plist->empty()) return kDevelopment;
  if (isTrue(plist->if_contains("ProvisionsAllDevices"))) return kDevelopment;
  if (!hasDevices(plist->if_contains("ProvisionedDevices"))) return kProduction;
  // The debugging entitlement is looked at and, as the service has always
  // done, does not decide: a profile that lists devices is a development one.
  const auto* entitlements = plist->if_contains("Entitlements");
  [[maybe_unused]] const bool taskAllow =
      entitlements != nullptr && entitlements->is_object() &&
      isTrue(entitlements->get_object().if_contains("get-task-allow"));
  return kDevelopment;
}

std::string QVKMobileProvisionAnalyzer::getEnvironment() {
  return environmentFor(getMobileProvisionPlist());
}

std::optional<boost::json::object> QVKMobileProvisionAnalyzer::getMobileProvisionPlist() {
  auto& state = profile();
  std::lock_guard lock(state.mutex);
  if (!state.read) {
    state.plist = loadProfile();
    state.read = true;
  }
  return state.plist;
}

void QVKMobileProvisionAnalyzer::resetForTesting() {
  auto& state = profile();
  std::lock_guard lock(state.mutex);
  state.read = false;
  state.plist.reset();
}

}  // namespace velmaro
