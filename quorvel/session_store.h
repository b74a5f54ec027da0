#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/platform/json_key_value_store.h"

namespace quorvel {

// The core library's key-value store for session state (access token, the
// anonymous guid, the settings document): JSON values in the table "session"
// of a platform JsonKeyValueStore, its problems logged as errors. Safe from
// any thread.
class SessionStore {
 public:
  explicit SessionStore(std::filesystem::path file);
  SessionStore(const SessionStore&) = delete;
  SessionStore& operator=(const SessionStore&) = delete;

  // False when the value could not be written to disk (it is still kept for
  // this process).
  bool store(const boost::json::value& value, std::string_view key);
  std::optional<boost::json::value> value(std::string_view key) const;
  bool remove(std::string_view key);
  std::vector<std::string> keys() const;

  // The value on disk now, as another process may have written it.
  std::optional<boost::json::value> currentValue(std::string_view key) {
    return store_.currentValue(key);
  }
  // The value on disk now, shown in place (platform::JsonKeyValueStore::readCurrent).
  void readCurrent(std::string_view key, const platform::JsonKeyValueStore::Reader& read) {
    store_.readCurrent(key, read);
  }
  // One atomic read-modify-write of `key`, also between processes sharing
  // the data folder (platform::JsonKeyValueStore::update).
  bool update(std::string_view key, const platform::JsonKeyValueStore::Change& change) {
    return store_.update(key, change);
  }
  // Removes every key except those in `keep`.
  void removeAllExcept(const std::vector<std::string>& keep);

  bool persistent() const { return store_.persistent(); }

 private:
  platform::JsonKeyValueStore store_;
};

}  // namespace quorvel
