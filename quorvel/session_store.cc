#include "quorvel/session_store.h"

#include <algorithm>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "quorvel/sqlite_database.h"
#include "quorvel/sqlite_statement.h"

namespace quorvel {

SessionStore::SessionStore(std::filesystem::path file)
    : db_(std::make_unique<SqliteDatabase>(
          std::move(file),
          "CREATE TABLE IF NOT EXISTS session (key TEXT PRIMARY KEY, value TEXT "
          "NOT NULL)")) {
  load();
}

SessionStore::~SessionStore() = default;

bool SessionStore::persistent() const {
  return db_->persistent();
}

void SessionStore::load() {
  SqliteStatement select(db_->handle(), "SELECT key, value FROM session");
  while (select.step()) {
    boost::system::error_code ec;
    auto parsed = boost::json::parse(select.text(1), ec);
    if (!ec) values_.insert_or_assign(select.text(0), std::move(parsed));
  }
}

bool SessionStore::writeRow(std::string_view key, const std::string* json) {
  if (json == nullptr) {
    SqliteStatement remove(db_->handle(), "DELETE FROM session WHERE key = ?1");
    remove.bind(1, key);
    return remove.run() && db_->persistent();
  }
  SqliteStatement upsert(db_->handle(),
                         "INSERT INTO session (key, value) VALUES (?1, ?2) "
                         "ON CONFLICT(key) DO UPDATE SET value = excluded.value");
  upsert.bind(1, key);
  upsert.bind(2, *json);
  return upsert.run() && db_->persistent();
}

bool SessionStore::store(const boost::json::value& value, std::string_view key) {
  // Boost.JSON writes a double with an exponent or a fraction, so it parses
  // back as a double; integers parse back as integers.
  const std::string json = boost::json::serialize(value);
  std::lock_guard lock(mutex_);
  values_.insert_or_assign(std::string(key), value);
  return writeRow(key, &json);
}

std::optional<boost::json::value> SessionStore::value(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

bool SessionStore::remove(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (const auto it = values_.find(key); it != values_.end()) values_.erase(it);
  return writeRow(key, nullptr);
}

std::vector<std::string> SessionStore::keys() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> result;
  result.reserve(values_.size());
  for (const auto& entry : values_) result.push_back(entry.first);
  return result;
}

void SessionStore::removeAllExcept(const std::vector<std::string>& keep) {
  for (const auto& key : keys()) {
    if (std::find(keep.begin(), keep.end(), key) == keep.end()) remove(key);
  }
}

}  // namespace quorvel
