#pragma once

#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "quorvel/http_cache_entry.h"

namespace quorvel {

namespace platform {
class SqliteDatabase;
}

// The on-disk HTTP cache (SQLite) with an in-memory LRU of hot entries in
// front of it, so that a hit on a recently used answer touches no file.
// Answers are on the transport's critical path, so neither a store nor a
// miss waits for the disk: a stored entry is in memory at once and written
// to the file by a writer thread of the cache (in batches, one transaction
// each, a little after the answer has gone out, so that the disk work does
// not compete with it for the processor), and the keys that are on disk are known in memory, so a
// miss costs no query. Safe from any thread.
class HttpCache {
 public:
  struct Limits {
    std::size_t memoryEntries = 256;
    std::size_t memoryBytes = 8u * 1024u * 1024u;
    std::size_t diskEntries = 2000;
  };

  explicit HttpCache(std::filesystem::path file);
  HttpCache(std::filesystem::path file, Limits limits);
  ~HttpCache();
  HttpCache(const HttpCache&) = delete;
  HttpCache& operator=(const HttpCache&) = delete;

  std::shared_ptr<const HttpCacheEntry> lookup(const std::string& key);
  // Blocks until every stored entry is in the file (tests, shutdown).
  void flush();
  void store(const std::string& key, HttpCacheEntry entry);
  void remove(const std::string& key);
  void clear();

 private:
  using Lru = std::list<std::pair<std::string, std::shared_ptr<const HttpCacheEntry>>>;
  using Pending = std::unordered_map<std::string, std::shared_ptr<const HttpCacheEntry>>;

  std::shared_ptr<const HttpCacheEntry> loadFromDisk(const std::string& key);
  void loadDiskKeys();
  void writeBatch(const Pending& batch);
  void runWriter();
  void remember(const std::string& key, std::shared_ptr<const HttpCacheEntry> entry);
  void forget(const std::string& key);

  Limits limits_;
  // Guards the in-memory state below; taken before dbMutex_ when both are held.
  std::mutex mutex_;
  std::condition_variable wake_;   // the writer waits here for work
  std::condition_variable delay_;  // and here while a batch gathers
  std::condition_variable written_;
  // Guards the connection, which the writer and disk lookups share.
  std::mutex dbMutex_;
  std::unique_ptr<platform::SqliteDatabase> db_;
  std::unordered_set<std::string> diskKeys_;  // on disk, or on their way there
  Pending pending_;                           // stored, not yet handed to the writer
  bool writing_ = false;
  bool writerIdle_ = false;  // waiting on wake_ for a first store
  bool flushRequested_ = false;
  bool stopping_ = false;
  std::thread writer_;
  Lru lru_;
  std::unordered_map<std::string, Lru::iterator> index_;
  std::size_t memoryBytes_ = 0;
};

}  // namespace quorvel
