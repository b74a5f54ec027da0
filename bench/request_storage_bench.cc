// The request store with many stored requests: one storeRequest and one
// getRequests, against the same work done as a bare SQLite read-modify-write
// (and read) of the same JSON value, in a file with the same settings (WAL,
// synchronous=NORMAL).
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <boost/json.hpp>
#include <sqlite3.h>

#include "velmaro/storage/request_storage.h"
#include "velmaro/storage/session_store_backend.h"

namespace {

namespace fs = std::filesystem;

const fs::path& benchDirectory() {
  static const fs::path dir = fs::temp_directory_path() /
                              ("request-storage-bench-" + std::to_string(std::random_device{}()));
  return dir;
}

// Removes the bench's files at exit, after the stores (made later) are gone.
// benchDirectory() is made first, so that it outlives this.
struct RemoveDirectoryAtExit {
  RemoveDirectoryAtExit() { benchDirectory(); }
  ~RemoveDirectoryAtExit() {
    std::error_code ec;
    fs::remove_all(benchDirectory(), ec);
  }
} removeDirectoryAtExit;

std::vector<velmaro::RequestForStorage> records(std::int64_t count) {
  std::vector<velmaro::RequestForStorage> list;
  for (std::int64_t i = 0; i < count; ++i) list.emplace_back(std::to_string(100000 + i), 4, 2);
  return list;
}

velmaro::RequestStorage& storage(std::int64_t count) {
  static std::map<std::int64_t, std::unique_ptr<velmaro::RequestStorage>> stores;
  auto& store = stores[count];
  if (!store) {
    auto session = std::make_shared<quorvel::SessionStore>(benchDirectory() /
                                                           ("session-" + std::to_string(count)));
    store = std::make_unique<velmaro::RequestStorage>(
        std::make_shared<velmaro::SessionStoreBackend>(session));
    store->storeRequestsAndResetCacheTime(records(count));
  }
  return *store;
}

// The same table and value, written and read with nothing but SQLite and
// Boost.JSON.
class BareStore {
 public:
  explicit BareStore(std::int64_t count) {
    const auto file = benchDirectory() / ("bare-" + std::to_string(count));
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
    for (const auto& r : records(count)) {
      dict[r.requestId()] = {{"comment_count", r.commentCount()},
                             {"read_comment_count", r.readCommentCount()}};
    }
    write(boost::json::serialize(dict));
  }
  ~BareStore() {
    sqlite3_finalize(select_);
    sqlite3_finalize(upsert_);
    sqlite3_close(db_);
  }

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

  void storeOne(const std::string& id) {
    exec("BEGIN IMMEDIATE");
    auto value = read();
    value.as_object()[id] = {{"comment_count", 5}, {"read_comment_count", 3}};
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

BareStore& bare(std::int64_t count) {
  static std::map<std::int64_t, std::unique_ptr<BareStore>> stores;
  auto& store = stores[count];
  if (!store) store = std::make_unique<BareStore>(count);
  return *store;
}

void BM_RequestStorageStoreRequest(benchmark::State& state) {
  auto& store = storage(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(store.storeRequest(velmaro::RequestForStorage("100007", 5, 3)));
  }
}

void BM_BareSqliteStoreRequest(benchmark::State& state) {
  auto& store = bare(state.range(0));
  for (auto _ : state) store.storeOne("100007");
}

void BM_RequestStorageGetRequests(benchmark::State& state) {
  auto& store = storage(state.range(0));
  for (auto _ : state) {
    auto requests = store.getRequests();
    benchmark::DoNotOptimize(requests);
  }
}

void BM_BareSqliteGetRequests(benchmark::State& state) {
  auto& store = bare(state.range(0));
  for (auto _ : state) {
    auto value = store.read();
    benchmark::DoNotOptimize(value);
  }
}

}  // namespace

BENCHMARK(BM_RequestStorageStoreRequest)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareSqliteStoreRequest)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RequestStorageGetRequests)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareSqliteGetRequests)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
