#include "quorvel/blip_queue.h"

#include "quorvel/core_logger.h"
#include "quorvel/platform/sqlite_database.h"
#include "quorvel/platform/sqlite_statement.h"

namespace quorvel {

using platform::SqliteDatabase;
using platform::SqliteStatement;

BlipQueue::BlipQueue(std::filesystem::path file)
    : db_(std::make_unique<SqliteDatabase>(
          std::move(file),
          "CREATE TABLE IF NOT EXISTS blips (id INTEGER PRIMARY KEY AUTOINCREMENT, "
          "blip TEXT NOT NULL)",
          &CoreLogger::error)) {}

BlipQueue::~BlipQueue() = default;

bool BlipQueue::append(const std::string& blipJson) {
  std::lock_guard lock(mutex_);
  SqliteStatement insert(db_->handle(), "INSERT INTO blips (blip) VALUES (?1)");
  insert.bind(1, blipJson);
  return insert.run();
}

std::vector<BlipQueue::Row> BlipQueue::oldest(std::size_t limit) {
  std::lock_guard lock(mutex_);
  SqliteStatement select(db_->handle(), "SELECT id, blip FROM blips ORDER BY id LIMIT ?1");
  select.bind(1, static_cast<std::int64_t>(limit));
  std::vector<Row> rows;
  while (select.step()) rows.emplace_back(select.integer(0), select.text(1));
  return rows;
}

void BlipQueue::removeThrough(std::int64_t lastId) {
  std::lock_guard lock(mutex_);
  SqliteStatement remove(db_->handle(), "DELETE FROM blips WHERE id <= ?1");
  remove.bind(1, lastId);
  remove.run();
}

std::size_t BlipQueue::count() {
  std::lock_guard lock(mutex_);
  SqliteStatement select(db_->handle(), "SELECT COUNT(*) FROM blips");
  return select.step() ? static_cast<std::size_t>(select.integer(0)) : 0;
}

}  // namespace quorvel
