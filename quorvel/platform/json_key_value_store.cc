#include "quorvel/platform/json_key_value_store.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/serializer.hpp>
#include <fmt/format.h>

#include "quorvel/platform/sqlite_statement.h"

namespace quorvel::platform {

JsonKeyValueStore::JsonKeyValueStore(std::filesystem::path file, std::string_view table,
                                     SqliteDatabase::ProblemLog problems)
    : upsertSql_(fmt::format("INSERT INTO \"{}\" (key, value) VALUES (?1, ?2) "
                             "ON CONFLICT(key) DO UPDATE SET value = excluded.value",
                             table)),
      deleteSql_(fmt::format("DELETE FROM \"{}\" WHERE key = ?1", table)),
      selectAllSql_(fmt::format("SELECT key, value FROM \"{}\"", table)),
      db_(std::move(file),
          fmt::format(
              "CREATE TABLE IF NOT EXISTS \"{}\" (key TEXT PRIMARY KEY, value TEXT NOT NULL)",
              table),
          std::move(problems)) {
  load();
}

void JsonKeyValueStore::load() {
  seenVersion_ = dataVersion();
  SqliteStatement select(db_.handle(), selectAllSql_.c_str());
  while (select.step()) {
    boost::system::error_code ec;
    auto parsed = boost::json::parse(select.text(1), ec);
    if (!ec) values_.insert_or_assign(select.text(0), std::move(parsed));
  }
}

void JsonKeyValueStore::serialize(const boost::json::value& value) {
  // Into a buffer kept between writes: a large value (the request store's
  // dictionary) then costs no fresh allocation and page faults per write.
  scratch_.clear();
  boost::json::serializer serializer;
  serializer.reset(&value);
  char chunk[16384];
  while (!serializer.done()) scratch_.append(serializer.read(chunk, sizeof chunk));
}

bool JsonKeyValueStore::written(bool statementRan) {
  // Memory now differs from the file: the next read of the file reloads.
  if (!statementRan) seenVersion_ = -1;
  // In memory the row is written too, but nothing is stored.
  return statementRan && db_.persistent();
}

bool JsonKeyValueStore::writeRow(std::string_view key, const std::string* json) {
  SqliteStatement statement(db_.handle(),
                            json != nullptr ? upsertSql_.c_str() : deleteSql_.c_str());
  statement.bind(1, key);
  if (json != nullptr) statement.bindUnowned(2, *json);
  return statement.run();
}

std::int64_t JsonKeyValueStore::dataVersion() const {
  SqliteStatement version(db_.handle(), "PRAGMA data_version");
  return version.step() ? version.integer(0) : -1;
}

void JsonKeyValueStore::refreshIfChanged() {
  // data_version moves when another connection (another store on the file,
  // another process) commits; this connection's own writes are in memory.
  if (dataVersion() == seenVersion_ && seenVersion_ != -1) return;
  values_.clear();
  load();
}

std::optional<boost::json::value> JsonKeyValueStore::memoryValue(std::string_view key) const {
  const auto it = values_.find(key);
  if (it == values_.end()) return std::nullopt;
  return it->second;
}

std::optional<boost::json::value> JsonKeyValueStore::currentValue(std::string_view key) {
  std::lock_guard lock(mutex_);
  refreshIfChanged();
  return memoryValue(key);
}

void JsonKeyValueStore::readCurrent(std::string_view key, const Reader& read) {
  std::lock_guard lock(mutex_);
  refreshIfChanged();
  const auto it = values_.find(key);
  read(it == values_.end() ? nullptr : &it->second);
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
    // The value was handed to the change: memory holds it no more, the
    // file holds what it had.
    values_.clear();
    load();
    return false;
  }
  return db_.persistent();
}

bool JsonKeyValueStore::applyChange(std::string_view key, const Change& change) {
  refreshIfChanged();
  // The value is handed over, not copied (a copy of the request store's
  // dictionary cost a third of a list call): the change replaces it anyway.
  std::optional<boost::json::value> current;
  if (const auto it = values_.find(key); it != values_.end()) current = std::move(it->second);
  auto next = change(std::move(current));
  serialize(next);
  if (!writeRow(key, &scratch_) || !db_.execute("COMMIT")) return false;
  values_.insert_or_assign(std::string(key), std::move(next));
  return true;
}

std::optional<boost::json::value> JsonKeyValueStore::value(std::string_view key) const {
  std::lock_guard lock(mutex_);
  return memoryValue(key);
}

bool JsonKeyValueStore::set(std::string_view key, const boost::json::value& value) {
  // Boost.JSON writes a double with an exponent or a fraction, so it parses
  // back as a double; integers parse back as integers.
  const std::string json = boost::json::serialize(value);
  std::lock_guard lock(mutex_);
  values_.insert_or_assign(std::string(key), value);
  return written(writeRow(key, &json));
}

bool JsonKeyValueStore::remove(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (const auto it = values_.find(key); it != values_.end()) values_.erase(it);
  return written(writeRow(key, nullptr));
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
