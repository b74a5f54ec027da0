#include "quorvel/platform/bundle.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>

#include "quorvel/platform/device_info.h"
#include "quorvel/platform/property_list.h"
#include "quorvel/platform/strings_file.h"

namespace quorvel::platform {
namespace fs = std::filesystem;

namespace {

struct Registry {
  std::mutex mutex;
  std::map<fs::path, std::shared_ptr<Bundle>> loaded;
  std::optional<fs::path> mainPath;
  std::vector<fs::path> searchPaths;
};

Registry& registry() {
  static Registry instance;
  return instance;
}

std::optional<std::string> readFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return std::move(bytes).str();
}

boost::json::object readInfoDictionary(const fs::path& directory) {
  const auto bytes = readFile(directory / "Info.plist");
  if (!bytes || bytes->empty()) return {};
  auto json = PropertyList::parse(*bytes);
  if (!json || !json->is_object()) return {};
  return std::move(json->as_object());
}

std::vector<fs::directory_entry> sortedEntries(const fs::path& directory) {
  std::vector<fs::directory_entry> entries;
  std::error_code ec;
  for (fs::directory_iterator it(directory, ec), end; !ec && it != end; it.increment(ec)) {
    entries.push_back(*it);
  }
  std::sort(entries.begin(), entries.end(),
            [](const auto& a, const auto& b) { return a.path().filename() < b.path().filename(); });
  return entries;
}

std::vector<std::string> readLocalizations(const fs::path& directory) {
  std::vector<std::string> names;
  for (const auto& entry : sortedEntries(directory)) {
    if (entry.is_directory() && entry.path().extension() == ".lproj") {
      names.push_back(entry.path().stem().string());
    }
  }
  return names;
}

// "de_CH" and "DE-ch" compare equal.
std::string normalizedTag(std::string_view tag) {
  std::string out;
  for (char c : tag) {
    out += c == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  return out;
}

std::string_view withoutDot(std::string_view type) {
  if (!type.empty() && type.front() == '.') type.remove_prefix(1);
  return type;
}

fs::path key(const fs::path& directory) {
  std::error_code ec;
  auto canonical = fs::weakly_canonical(directory, ec);
  return ec ? directory.lexically_normal() : canonical;
}

std::shared_ptr<Bundle> loadLocked(Registry& r, const fs::path& directory) {
  std::error_code ec;
  if (!fs::is_directory(directory, ec)) return nullptr;
  auto path = key(directory);
  auto& slot = r.loaded[path];
  if (!slot) slot = std::make_shared<Bundle>(path);
  return slot;
}

fs::path executableDirectory() {
  std::error_code ec;
  const auto exe = fs::read_symlink("/proc/self/exe", ec);
  return ec ? fs::current_path(ec) : exe.parent_path();
}

}  // namespace

Bundle::Bundle(fs::path directory)
    : path_(std::move(directory)),
      info_(readInfoDictionary(path_)),
      localizations_(readLocalizations(path_)) {}

std::shared_ptr<Bundle> Bundle::main() {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  if (!r.mainPath) r.mainPath = executableDirectory();
  return loadLocked(r, *r.mainPath);
}

void Bundle::setMain(fs::path directory) {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  r.mainPath = std::move(directory);
}

std::shared_ptr<Bundle> Bundle::atPath(const fs::path& directory) {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  return loadLocked(r, directory);
}

std::shared_ptr<Bundle> Bundle::withIdentifier(std::string_view identifier) {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  for (const auto& [path, bundle] : r.loaded) {
    if (bundle->identifier() == identifier) return bundle;
  }
  for (const auto& directory : r.searchPaths) {
    for (const auto& entry : sortedEntries(directory)) {
      if (!entry.is_directory() || entry.path().extension() != ".bundle") continue;
      // Read the candidate's identifier without keeping bundles that do not match.
      const auto info = readInfoDictionary(entry.path());
      const auto* id = info.if_contains("CFBundleIdentifier");
      if (id && id->is_string() && id->get_string() == identifier) {
        return loadLocked(r, entry.path());
      }
    }
  }
  return nullptr;
}

void Bundle::registerSearchPath(fs::path directory) {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  if (std::find(r.searchPaths.begin(), r.searchPaths.end(), directory) == r.searchPaths.end()) {
    r.searchPaths.push_back(std::move(directory));
  }
}

void Bundle::resetForTesting() {
  auto& r = registry();
  std::lock_guard lock(r.mutex);
  r.loaded.clear();
  r.mainPath.reset();
  r.searchPaths.clear();
}

std::optional<boost::json::value> Bundle::objectForInfoDictionaryKey(std::string_view key) const {
  if (const auto* value = info_.if_contains(key)) return *value;
  return std::nullopt;
}

std::optional<std::string> Bundle::identifier() const {
  const auto* id = info_.if_contains("CFBundleIdentifier");
  if (id && id->is_string()) return std::string(id->get_string());
  return std::nullopt;
}

std::optional<std::string> Bundle::developmentRegion() const {
  const auto* region = info_.if_contains("CFBundleDevelopmentRegion");
  if (region && region->is_string()) return std::string(region->get_string());
  return std::nullopt;
}

std::vector<std::string> Bundle::preferredLocalizations() const {
  std::vector<std::string> order;
  const auto add = [&](const std::string& wanted) {
    const auto norm = normalizedTag(wanted);
    for (const auto& name : localizations_) {
      if (normalizedTag(name) == norm) {
        if (std::find(order.begin(), order.end(), name) == order.end()) order.push_back(name);
        return true;
      }
    }
    return false;
  };
  for (const auto& language : DeviceInfo::preferredLanguages()) {
    if (!add(language)) add(language.substr(0, language.find_first_of("-_")));
  }
  if (auto region = developmentRegion()) add(*region);
  add("en");
  add("Base");
  return order;
}

std::optional<fs::path> Bundle::findFile(const fs::path& directory, std::string_view name,
                                         std::string_view type) const {
  std::error_code ec;
  type = withoutDot(type);
  if (!type.empty()) {
    auto candidate = directory / (std::string(name) + "." + std::string(type));
    if (fs::exists(candidate, ec)) return candidate;
    return std::nullopt;
  }
  auto exact = directory / std::string(name);
  if (fs::exists(exact, ec)) return exact;
  const std::string prefix = std::string(name) + ".";
  for (const auto& entry : sortedEntries(directory)) {
    if (entry.path().filename().string().starts_with(prefix)) return entry.path();
  }
  return std::nullopt;
}

std::optional<fs::path> Bundle::pathForResource(std::string_view name, std::string_view type,
                                                std::string_view subdirectory) const {
  if (name.empty()) return std::nullopt;
  const fs::path sub(subdirectory);
  if (auto found = findFile(path_ / sub, name, type)) return found;
  for (const auto& localization : preferredLocalizations()) {
    if (auto found = findFile(path_ / (localization + ".lproj") / sub, name, type)) return found;
  }
  return std::nullopt;
}

std::vector<fs::path> Bundle::pathsForResources(std::string_view type,
                                                std::string_view subdirectory) const {
  const std::string extension = "." + std::string(withoutDot(type));
  std::vector<fs::path> paths;
  for (const auto& entry : sortedEntries(path_ / fs::path(subdirectory))) {
    if (extension == "." || entry.path().extension() == extension) paths.push_back(entry.path());
  }
  return paths;
}

std::shared_ptr<Bundle> Bundle::childBundle(std::string_view name) const {
  const auto path = pathForResource(name, "bundle");
  return path ? atPath(*path) : nullptr;
}

std::optional<fs::path> Bundle::tableFile(std::string_view tableName,
                                          const std::vector<std::string>& order) const {
  const std::string file = std::string(tableName) + ".strings";
  std::error_code ec;
  for (const auto& localization : order) {
    auto candidate = path_ / (localization + ".lproj") / file;
    if (fs::is_regular_file(candidate, ec)) return candidate;
  }
  auto topLevel = path_ / file;
  if (fs::is_regular_file(topLevel, ec)) return topLevel;
  return std::nullopt;
}

std::shared_ptr<const Bundle::StringTable> Bundle::loadTable(const fs::path& file) const {
  const auto bytes = readFile(file);
  if (!bytes) return nullptr;
  auto parsed = StringsFile::parse(*bytes);
  if (!parsed) return nullptr;
  return std::make_shared<const StringTable>(std::move(parsed).value());
}

std::shared_ptr<const Bundle::StringTable> Bundle::cachedTable(std::string_view tableName) const {
  if (tableName.empty()) tableName = "Localizable";
  const auto order = preferredLocalizations();
  std::string cacheKey(tableName);
  for (const auto& localization : order) cacheKey += "\n" + localization;

  std::lock_guard lock(mutex_);
  auto resolved = tableFiles_.find(cacheKey);
  if (resolved == tableFiles_.end()) {
    resolved = tableFiles_.emplace(cacheKey, tableFile(tableName, order)).first;
  }
  if (!resolved->second) return nullptr;
  auto& table = tables_[*resolved->second];
  if (!table) table = loadTable(*resolved->second);
  return table;
}

std::optional<Bundle::StringTable> Bundle::stringsTable(std::string_view tableName) const {
  auto table = cachedTable(tableName);
  if (!table) return std::nullopt;
  return *table;
}

std::string Bundle::localizedString(std::string_view key, std::string_view value,
                                    std::string_view tableName) const {
  if (auto table = cachedTable(tableName)) {
    if (auto it = table->find(std::string(key)); it != table->end()) return it->second;
  }
  return std::string(value.empty() ? key : value);
}

std::vector<std::string> Bundle::stringsFiles() const {
  std::vector<std::string> names;
  const auto collect = [&](const fs::path& directory) {
    for (const auto& entry : sortedEntries(directory)) {
      if (entry.path().extension() == ".strings") names.push_back(entry.path().filename());
    }
  };
  collect(path_);
  const auto order = preferredLocalizations();
  if (!order.empty()) collect(path_ / (order.front() + ".lproj"));
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

}  // namespace quorvel::platform
