#include "velmaro/util/qvk_localization.h"

#include <mutex>

#include "velmaro/util/qvk_bundle_utils.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {
namespace {

using quorvel::platform::Bundle;
using BundleList = std::vector<std::shared_ptr<Bundle>>;

struct State {
  std::mutex mutex;
  std::optional<BundleList> bundles;
  std::optional<std::string> hostTableName;
};

State& state() {
  static State instance;
  return instance;
}

std::string tableNameOf(const std::string& fileName) {
  return fileName.substr(0, fileName.find('.'));
}

BundleList buildLookupList() {
  auto main = Bundle::main();
  auto strings = QVKBundleUtils::frameworkStringsBundle();
  BundleList candidates{main};
  for (const auto& path : main->pathsForResources("bundle")) {
    // The library's own strings are appended last, whatever the host ships.
    if (path.stem() == QVKBundleUtils::kStringsBundleName) continue;
    if (auto bundle = Bundle::atPath(path); bundle && bundle != strings) {
      candidates.push_back(std::move(bundle));
    }
  }
  BundleList list;
  for (auto& candidate : candidates) {
    if (QVKLocalization::hasCustomisedStrings(*candidate)) list.push_back(std::move(candidate));
  }
  if (strings) list.push_back(std::move(strings));
  return list;
}

const BundleList& lookupListLocked(State& s) {
  if (!s.bundles) s.bundles = buildLookupList();
  return *s.bundles;
}

}  // namespace

std::vector<std::shared_ptr<Bundle>> QVKLocalization::lookupBundles() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  return lookupListLocked(s);
}

void QVKLocalization::registerTableName(std::string_view tableName) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  lookupListLocked(s);
  s.hostTableName = std::string(tableName);
}

std::string QVKLocalization::localizedStringWithKey(std::string_view key) {
  BundleList bundles;
  std::string hostTable;
  {
    auto& s = state();
    std::lock_guard lock(s.mutex);
    bundles = lookupListLocked(s);
    hostTable = s.hostTableName.value_or(QVKBundleUtils::stringsTableName());
  }
  const std::string defaultTable = QVKBundleUtils::stringsTableName();
  std::string text(key);
  for (const auto& bundle : bundles) {
    text = bundle->localizedString(key, "", hostTable);
    if (text == key && hostTable != defaultTable)
      text = bundle->localizedString(key, "", defaultTable);
    if (text != key) {
      logKey(key, text);
      break;
    }
  }
  return text;
}

std::optional<std::map<std::string, std::string>> QVKLocalization::stringsFromTable(
    std::string_view tableName, const Bundle& bundle) {
  return bundle.stringsTable(tableName);
}

bool QVKLocalization::hasCustomisedStrings(const Bundle& bundle) {
  auto strings = QVKBundleUtils::frameworkStringsBundle();
  if (!strings) return false;
  const auto libraryTable = stringsFromTable(QVKBundleUtils::stringsTableName(), *strings);
  if (!libraryTable) return false;
  for (const auto& file : bundle.stringsFiles()) {
    const auto table = stringsFromTable(tableNameOf(file), bundle);
    if (!table) continue;
    for (const auto& entry : *table) {
      if (!libraryTable->contains(entry.first)) continue;
      if (file != "Localizable.strings") {
        QVKClassicLogger::i(
            "If you have customised any localized strings in %@ you need to register this with "
            "[QVKLocalization registerTableName:@\"your-table-name\"].",
            file);
      }
      return true;
    }
  }
  return false;
}

void QVKLocalization::printAllKeys() {
  auto strings = QVKBundleUtils::frameworkStringsBundle();
  const auto table =
      strings ? stringsFromTable(QVKBundleUtils::stringsTableName(), *strings) : std::nullopt;
  if (!table) {
    QVKClassicLogger::error(
        "The %@ was not found. If you want to print all the localization keys please add the "
        "bundle and call this method again.");
    return;
  }
  std::string message;
  for (const auto& entry : *table) {
    message += StringFormat::format("\n\"%@\" = \"<#new value#>\";", entry.first);
  }
  QVKClassicLogger::info(message);
}

void QVKLocalization::logKey(std::string_view key, std::string_view value) {
  QVKClassicLogger::i("Localization key and value : \"%@\" = \"%@\";", key, value);
}

void QVKLocalization::resetForTesting() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.bundles.reset();
  s.hostTableName.reset();
}

}  // namespace velmaro
