// The request store's table and value, written and read with nothing but
// SQLite and Boost.JSON, in a file with the same settings (WAL,
// synchronous=NORMAL): the floor the request store's figures are held to.
// Used on one thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json.hpp>
#include <sqlite3.h>

namespace velmaro::bench {

class BareRequestStore {
 public:
  // A store at `file` holding `count` requests with ids 100000, 100001, ….
  BareRequestStore(const std::filesystem::path& file, std::int64_t count) {
    sqlite3_open(file.c_str(), &db_);
    exec("PRAGMA journal_mode=WAL");
    exec("PRAGMA synchronous=NORMAL");
    exec("CREATE TABLE IF NOT EXISTS session (key TEXT PRIMARY KEY, value TEXT NOT NULL)");
    sqlite3_prepare_v2(db_, "SELECT value FROM session WHERE key = ?1", -1, &select_, nullptr);
    sqlite3_prepare_v2(db_,
                       "INSERT INTO session (key, value) VALUES (?1, ?2) ON CONFLICT(key) DO "
                       "UPDATE SET value = excluded.value",
                       -1, &upsert_, nullptr);
    boost::json::object dict;
    for (std::int64_t i = 0; i < count; ++i) {
      dict[std::to_string(100000 + i)] = {{"comment_count", 4}, {"read_comment_count", 2}};
    }
    write(boost::json::serialize(dict));
  }
  ~BareRequestStore() {
    sqlite3_finalize(select_);
    sqlite3_finalize(upsert_);
    sqlite3_close(db_);
  }
  BareRequestStore(const BareRequestStore&) = delete;
  BareRequestStore& operator=(const BareRequestStore&) = delete;

  // The stored dictionary, read and parsed.
  boost::json::value read() {
    sqlite3_bind_text(select_, 1, kKey, -1, SQLITE_STATIC);
    boost::json::value value;
    if (sqlite3_step(select_) == SQLITE_ROW) {
      value = boost::json::parse(
          std::string_view(static_cast<const char*>(sqlite3_column_blob(select_, 0)),
                           static_cast<std::size_t>(sqlite3_column_bytes(select_, 0))));
    }
    sqlite3_reset(select_);
    return value;
  }

  // One read-modify-write that sets the counters of each of `ids`.
  void storeAll(const std::vector<std::string>& ids) {
    exec("BEGIN IMMEDIATE");
    auto value = read();
    for (const auto& id : ids) {
      value.as_object()[id] = {{"comment_count", 5}, {"read_comment_count", 3}};
    }
    write(boost::json::serialize(value));
    exec("COMMIT");
  }

 private:
  static constexpr const char* kKey = "quorvel.support.request.storage";
  void exec(const char* sql) { sqlite3_exec(db_, sql, nullptr, nullptr, nullptr); }
  void write(const std::string& json) {
    sqlite3_bind_text(upsert_, 1, kKey, -1, SQLITE_STATIC);
    sqlite3_bind_text(upsert_, 2, json.data(), static_cast<int>(json.size()), SQLITE_STATIC);
    sqlite3_step(upsert_);
    sqlite3_reset(upsert_);
  }

  sqlite3* db_ = nullptr;
  sqlite3_stmt* select_ = nullptr;
  sqlite3_stmt* upsert_ = nullptr;
};

}  // namespace velmaro::bench
