#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvel/platform/bundle.h"

namespace velmaro {

// Looks texts up by key: first in the host's bundles that override a library
// key, then in the library's own strings bundle. The list of bundles is built
// once per process, on the first lookup or registration.
class QVKLocalization {
 public:
  // Registers the host's table name (for a file other than Localizable.strings).
  static void registerTableName(std::string_view tableName);
  // The text for `key`, or the key itself when no bundle has it.
  static std::string localizedStringWithKey(std::string_view key);
  // The table `<tableName>.strings` of `bundle`, or nothing.
  static std::optional<std::map<std::string, std::string>> stringsFromTable(
      std::string_view tableName, const quorvel::platform::Bundle& bundle);
  // Whether one of the bundle's string tables overrides a library key.
  static bool hasCustomisedStrings(const quorvel::platform::Bundle& bundle);
  // Logs a template table with every library key, for translators.
  static void printAllKeys();
  static void logKey(std::string_view key, std::string_view value);

  // The bundles that lookups go through, in order (built on first use).
  static std::vector<std::shared_ptr<quorvel::platform::Bundle>> lookupBundles();
  // Forgets the lookup list and the registered table name (tests).
  static void resetForTesting();
};

}  // namespace velmaro
