#include "emulator/database.h"

#include <sqlite3.h>

namespace qvk::emulator {

Database::Database(const std::string& path) {
  if (sqlite3_open_v2(path.c_str(), &db_,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                      nullptr) != SQLITE_OK) {
    std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    db_ = nullptr;
    throw DatabaseError("cannot open database " + path + ": " + message);
  }
  sqlite3_busy_timeout(db_, 5000);
  script("PRAGMA foreign_keys = ON;");
  if (path != ":memory:") script("PRAGMA journal_mode = WAL;");
}

Database::~Database() {
  for (auto& [sql, stmt] : statements_) sqlite3_finalize(stmt);
  sqlite3_close(db_);
}

void Database::fail(std::string_view what) {
  throw DatabaseError(std::string(what) + ": " + sqlite3_errmsg(db_));
}

sqlite3_stmt* Database::prepare(std::string_view sql) {
  std::string key(sql);
  if (auto it = statements_.find(key); it != statements_.end()) {
    sqlite3_reset(it->second);
    sqlite3_clear_bindings(it->second);
    return it->second;
  }
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, key.c_str(), static_cast<int>(key.size()), &stmt, nullptr) !=
      SQLITE_OK) {
    fail("prepare failed for \"" + key + "\"");
  }
  statements_.emplace(std::move(key), stmt);
  return stmt;
}

void Database::bind(sqlite3_stmt* stmt, const std::vector<SqlValue>& params) {
  int index = 1;
  for (const auto& p : params) {
    int rc = SQLITE_OK;
    if (std::holds_alternative<std::nullptr_t>(p)) {
      rc = sqlite3_bind_null(stmt, index);
    } else if (const auto* n = std::get_if<std::int64_t>(&p)) {
      rc = sqlite3_bind_int64(stmt, index, *n);
    } else if (const auto* d = std::get_if<double>(&p)) {
      rc = sqlite3_bind_double(stmt, index, *d);
    } else if (const auto* s = std::get_if<std::string>(&p)) {
      rc = sqlite3_bind_text(stmt, index, s->data(), static_cast<int>(s->size()), SQLITE_TRANSIENT);
    } else {
      const auto& b = std::get<Blob>(p);
      rc = sqlite3_bind_blob(stmt, index, b.bytes.data(), static_cast<int>(b.bytes.size()),
                             SQLITE_TRANSIENT);
    }
    if (rc != SQLITE_OK) fail("bind failed");
    ++index;
  }
}

static SqlValue columnValue(sqlite3_stmt* stmt, int i) {
  switch (sqlite3_column_type(stmt, i)) {
    case SQLITE_INTEGER:
      return static_cast<std::int64_t>(sqlite3_column_int64(stmt, i));
    case SQLITE_FLOAT:
      return sqlite3_column_double(stmt, i);
    case SQLITE_TEXT: {
      const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(stmt, i));
      return std::string(p, static_cast<std::size_t>(sqlite3_column_bytes(stmt, i)));
    }
    case SQLITE_BLOB: {
      const auto* p = static_cast<const char*>(sqlite3_column_blob(stmt, i));
      auto n = static_cast<std::size_t>(sqlite3_column_bytes(stmt, i));
      return Blob{p ? std::string(p, n) : std::string()};
    }
    default:
      return nullptr;
  }
}

std::vector<SqlRow> Database::query(std::string_view sql, const std::vector<SqlValue>& params) {
  auto guard = lock();
  sqlite3_stmt* stmt = prepare(sql);
  bind(stmt, params);
  std::vector<SqlRow> rows;
  const int columns = sqlite3_column_count(stmt);
  for (;;) {
    int rc = sqlite3_step(stmt);
    if (rc == SQLITE_DONE) break;
    if (rc != SQLITE_ROW) {
      sqlite3_reset(stmt);
      fail("step failed");
    }
    std::vector<SqlValue> values;
    values.reserve(static_cast<std::size_t>(columns));
    for (int i = 0; i < columns; ++i) values.push_back(columnValue(stmt, i));
    rows.emplace_back(std::move(values));
  }
  sqlite3_reset(stmt);
  return rows;
}

std::optional<SqlRow> Database::queryOne(std::string_view sql,
                                         const std::vector<SqlValue>& params) {
  auto rows = query(sql, params);
  if (rows.empty()) return std::nullopt;
  return std::move(rows.front());
}

std::int64_t Database::execute(std::string_view sql, const std::vector<SqlValue>& params) {
  auto guard = lock();
  query(sql, params);
  return sqlite3_changes(db_);
}

void Database::script(const std::string& sql) {
  auto guard = lock();
  char* message = nullptr;
  if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    std::string text = message ? message : "unknown error";
    sqlite3_free(message);
    throw DatabaseError("script failed: " + text);
  }
}

std::int64_t Database::lastInsertId() {
  auto guard = lock();
  return sqlite3_last_insert_rowid(db_);
}

}  // namespace qvk::emulator
