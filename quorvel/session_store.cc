#include "quorvel/session_store.h"

#include <algorithm>

#include "quorvel/core_logger.h"

namespace quorvel {

SessionStore::SessionStore(std::filesystem::path file)
    : store_(std::move(file), "session", &CoreLogger::error) {}

bool SessionStore::store(const boost::json::value& value, std::string_view key) {
  return store_.set(key, value);
}

std::optional<boost::json::value> SessionStore::value(std::string_view key) const {
  return store_.value(key);
}

bool SessionStore::remove(std::string_view key) {
  return store_.remove(key);
}

std::vector<std::string> SessionStore::keys() const {
  return store_.keys();
}

void SessionStore::removeAllExcept(const std::vector<std::string>& keep) {
  for (const auto& key : keys()) {
    if (std::find(keep.begin(), keep.end(), key) == keep.end()) remove(key);
  }
}

}  // namespace quorvel
