#include "quorvel/platform/json_key_value_store.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fmt/format.h>

#include "quorvel/platform/sqlite_statement.h"

namespace quorvel::platform {

JsonKeyValueStore::JsonKeyValueStore(std::filesystem::path file, std::string_view table,
                                     SqliteDatabase::ProblemLog problems)
    : upsertSql_(fmt::format("INSERT INTO \"{}\" (key, value) VALUES (?1, ?2) "
                             "ON CONFLICT(key) DO UPDATE SET value = excluded.value",
                             table)),
      deleteSql_(fmt::format("DELETE FROM \"{}\" WHERE key = ?1", table)),
      selectSql_(fmt::format("SELECT value FROM \"{}\" WHERE key = ?1", table)),
      db_(std::move(file),
          fmt::format(
              "CREATE TABLE IF NOT EXISTS \"{}\" (key TEXT PRIMARY KEY, value TEXT NOT NULL)",
              table),
          std::move(problems)) {
  load(table);
}

void JsonKeyValueStore::load(std::string_view table) {
  SqliteStatement select(db_.handle(), fmt::format("SELECT key, value FROM \"{}\"", table).c_str());
  while (select.step()) {
    boost::system::error_code ec;
    auto parsed = boost::json::parse(select.text(1), ec);
    if (!ec) values_.insert_or_assign(select.text(0), std::move(parsed));
  }
}

bool JsonKeyValueStore::writeRow(std::string_view key, const std::string* json) {
  SqliteStatement statement(db_.handle(),
                            json != nullptr ? upsertSql_.c_str() : deleteSql_.c_str());
  statement.bind(1, key);
  if (json != nullptr) statement.bind(2, *json);
  return statement.run();
}

std::optional<boost::json::value> JsonKeyValueStore::readRow(std::string_view key) const {
  SqliteStatement select(db_.handle(), selectSql_.c_str());
  select.bind(1, key);
  if (!select.step()) return std::nullopt;
  boost::system::error_code ec;
  auto parsed = boost::json::parse(select.text(0), ec);
  if (ec) return std::nullopt;
  return parsed;
}

std::optional<boost::json::value> JsonKeyValueStore::currentValue(std::string_view key) {
  std::lock_guard lock(mutex_);
  auto current = readRow(key);
  if (current) {
    values_.insert_or_assign(std::string(key), *current);
  } else if (const auto it = values_.find(key); it != values_.end()) {
    values_.erase(it);
  }
  return current;
}

bool JsonKeyValueStore::update(std::string_view key, const Change& change) {
  std::lock_guard lock(mutex_);
  // IMMEDIATE takes the write lock now, so no other writer can change the
  // value between the read and the write.
  if (!db_.execute("BEGIN IMMEDIATE")) {
    db_.report(fmt::format("Cannot lock {} to update {}", db_.path().string(), key));
    return false;
  }
  if (!applyChange(key, change)) {
    db_.report(fmt::format("Cannot write {} in {}", key, db_.path().string()));
    db_.execute("ROLLBACK");
    return false;
  }
  return db_.persistent();
}

bool JsonKeyValueStore::applyChange(std::string_view key, const Change& change) {
  auto next = change(readRow(key));
  const std::string json = boost::json::serialize(next);
  if (!writeRow(key, &json) || !db_.execute("COMMIT")) return false;
  values_.insert_or_assign(std::string(key), std::move(next));
  return true;
}

std::optional<boost::json::value> JsonKeyValueStore::value(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

bool JsonKeyValueStore::set(std::string_view key, const boost::json::value& value) {
  // Boost.JSON writes a double with an exponent or a fraction, so it parses
  // back as a double; integers parse back as integers.
  const std::string json = boost::json::serialize(value);
  std::lock_guard lock(mutex_);
  values_.insert_or_assign(std::string(key), value);
  // In memory the row is written too, but nothing is stored.
  return writeRow(key, &json) && db_.persistent();
}

bool JsonKeyValueStore::remove(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (const auto it = values_.find(key); it != values_.end()) values_.erase(it);
  return writeRow(key, nullptr) && db_.persistent();
}

std::vector<std::string> JsonKeyValueStore::keys() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> result;
  result.reserve(values_.size());
  for (const auto& entry : values_) result.push_back(entry.first);
  return result;
}

bool JsonKeyValueStore::synchronize() {
  std::lock_guard lock(mutex_);
  return db_.checkpoint();
}

}  // namespace quorvel::platform
