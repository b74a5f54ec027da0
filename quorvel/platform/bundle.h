#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace quorvel::platform {

// A directory of resources with an information dictionary (Info.plist, XML or
// binary) and localized string tables in `<lang>.lproj/<Table>.strings`, the
// way a phone OS packages an app and its frameworks.
//
// Bundles are shared and loaded once per path: the information dictionary and
// the list of localizations are read when the bundle is first asked for and
// stay as read. String tables are parsed on first use and cached. All
// functions are safe from any thread.
class Bundle {
 public:
  using StringTable = std::map<std::string, std::string>;

  // The host's bundle: the directory set with setMain(), else the directory
  // of the running executable.
  static std::shared_ptr<Bundle> main();
  static void setMain(std::filesystem::path directory);

  // The bundle at `directory`, or null when it is not a directory.
  static std::shared_ptr<Bundle> atPath(const std::filesystem::path& directory);

  // A bundle with this CFBundleIdentifier among those loaded so far, else
  // among the `*.bundle` directories inside the registered search paths (in
  // registration order, then by name). Null when none has it.
  static std::shared_ptr<Bundle> withIdentifier(std::string_view identifier);
  static void registerSearchPath(std::filesystem::path directory);

  // Forgets every loaded bundle, the main bundle and the search paths (tests).
  static void resetForTesting();

  explicit Bundle(std::filesystem::path directory);  // use atPath()
  Bundle(const Bundle&) = delete;
  Bundle& operator=(const Bundle&) = delete;

  const std::filesystem::path& bundlePath() const { return path_; }
  std::optional<std::string> identifier() const;
  std::optional<std::string> developmentRegion() const;
  const boost::json::object& infoDictionary() const { return info_; }
  std::optional<boost::json::value> objectForInfoDictionaryKey(std::string_view key) const;

  // A resource file `<name>.<type>` (type with or without its dot; an empty
  // type matches `name` exactly, else the first `name.*` by name). Looked for
  // in `subdirectory` of the bundle, then in the same place inside each
  // preferred localization's `.lproj` folder.
  std::optional<std::filesystem::path> pathForResource(std::string_view name, std::string_view type,
                                                       std::string_view subdirectory = "") const;
  // Every top-level resource with that extension, sorted by file name.
  std::vector<std::filesystem::path> pathsForResources(std::string_view type,
                                                       std::string_view subdirectory = "") const;
  // The sub-bundle `<name>.bundle`, or null.
  std::shared_ptr<Bundle> childBundle(std::string_view name) const;

  // The names of the `*.lproj` folders ("en", "de", "Base"), sorted.
  const std::vector<std::string>& localizations() const { return localizations_; }
  // The bundle's localizations in the order lookups try them: for each of
  // the user's preferred languages its exact tag, else its language alone
  // (case-insensitive, "_" and "-" alike); then the development region, "en"
  // and "Base" when the bundle has them.
  std::vector<std::string> preferredLocalizations() const;

  // The named table of the first preferred localization that has it, else a
  // top-level `<Table>.strings`. Nothing when no such file exists or it is
  // malformed.
  std::optional<StringTable> stringsTable(std::string_view tableName) const;
  // The text for `key`; a missing key gives `value` when it is non-empty,
  // else the key itself. An empty table name means "Localizable".
  std::string localizedString(std::string_view key, std::string_view value = "",
                              std::string_view tableName = "Localizable") const;
  // The file names of the `*.strings` tables that stringsTable() can see: the
  // top level's and the first preferred localization's, sorted, no duplicates.
  std::vector<std::string> stringsFiles() const;

 private:
  std::shared_ptr<const StringTable> cachedTable(std::string_view tableName) const;
  std::optional<std::filesystem::path> tableFile(std::string_view tableName,
                                                 const std::vector<std::string>& order) const;
  std::shared_ptr<const StringTable> loadTable(const std::filesystem::path& file) const;
  std::optional<std::filesystem::path> findFile(const std::filesystem::path& directory,
                                                std::string_view name, std::string_view type) const;

  std::filesystem::path path_;
  boost::json::object info_;
  std::vector<std::string> localizations_;

  mutable std::mutex mutex_;
  // Parsed tables by file path; null for a file that could not be read.
  mutable std::map<std::filesystem::path, std::shared_ptr<const StringTable>> tables_;
  // Which file serves a table for a list of preferred localizations, so that
  // repeated lookups touch the disk once.
  mutable std::map<std::string, std::optional<std::filesystem::path>> tableFiles_;
};

}  // namespace quorvel::platform
