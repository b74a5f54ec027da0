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

#include "bench/bare_request_store.h"
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

velmaro::bench::BareRequestStore& bare(std::int64_t count) {
  static std::map<std::int64_t, std::unique_ptr<velmaro::bench::BareRequestStore>> stores;
  auto& store = stores[count];
  if (!store) {
    store = std::make_unique<velmaro::bench::BareRequestStore>(
        benchDirectory() / ("bare-" + std::to_string(count)), count);
  }
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
  for (auto _ : state) store.storeAll({"100007"});
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
