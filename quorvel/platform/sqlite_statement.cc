#include "quorvel/platform/sqlite_statement.h"

#include <sqlite3.h>

#include "quorvel/platform/sqlite_database.h"

namespace quorvel::platform {

SqliteStatement::SqliteStatement(sqlite3* db, const char* sql) {
  if (db == nullptr) return;
  const int result = sqlite3_prepare_v2(db, sql, -1, &stmt_, nullptr);
  if (result != SQLITE_OK) {
    sqlite3_finalize(stmt_);
    stmt_ = nullptr;
    SqliteDatabase::noteFailure(db, result);
  }
}

int SqliteStatement::stepOnce() {
  const int result = sqlite3_step(stmt_);
  if (result != SQLITE_ROW && result != SQLITE_DONE) {
    SqliteDatabase::noteFailure(sqlite3_db_handle(stmt_), result);
  }
  return result;
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(stmt_);
}

void SqliteStatement::bind(int index, std::string_view text) {
  if (stmt_ != nullptr) {
    sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }
}

void SqliteStatement::bindUnowned(int index, std::string_view text) {
  if (stmt_ != nullptr) {
    sqlite3_bind_text(stmt_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
}

void SqliteStatement::bindBlob(int index, std::string_view bytes) {
  if (stmt_ != nullptr) {
    sqlite3_bind_blob(stmt_, index, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
  }
}

void SqliteStatement::bind(int index, std::int64_t number) {
  if (stmt_ != nullptr) sqlite3_bind_int64(stmt_, index, number);
}

void SqliteStatement::bind(int index, double number) {
  if (stmt_ != nullptr) sqlite3_bind_double(stmt_, index, number);
}

void SqliteStatement::bindNull(int index) {
  if (stmt_ != nullptr) sqlite3_bind_null(stmt_, index);
}

bool SqliteStatement::step() {
  return stmt_ != nullptr && stepOnce() == SQLITE_ROW;
}

bool SqliteStatement::run() {
  if (stmt_ == nullptr) return false;
  const int rc = stepOnce();
  return rc == SQLITE_DONE || rc == SQLITE_ROW;
}

void SqliteStatement::reset() {
  if (stmt_ != nullptr) {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
  }
}

std::string SqliteStatement::text(int column) const {
  const void* data = sqlite3_column_blob(stmt_, column);
  const int size = sqlite3_column_bytes(stmt_, column);
  return data != nullptr
             ? std::string(static_cast<const char*>(data), static_cast<std::size_t>(size))
             : std::string();
}

std::int64_t SqliteStatement::integer(int column) const {
  return sqlite3_column_int64(stmt_, column);
}

double SqliteStatement::real(int column) const {
  return sqlite3_column_double(stmt_, column);
}

bool SqliteStatement::isNull(int column) const {
  return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

}  // namespace quorvel::platform
