#pragma once

#include <cstddef>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "quorvel/http_cache_entry.h"

namespace quorvel {

class SqliteDatabase;

// The on-disk HTTP cache (SQLite) with an in-memory LRU of hot entries in
// front of it, so that a hit on a recently used answer touches no file.
// Safe from any thread.
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
  void store(const std::string& key, HttpCacheEntry entry);
  void remove(const std::string& key);
  void clear();

 private:
  using Lru = std::list<std::pair<std::string, std::shared_ptr<const HttpCacheEntry>>>;

  std::shared_ptr<const HttpCacheEntry> loadFromDisk(const std::string& key);
  void writeToDisk(const std::string& key, const HttpCacheEntry& entry);
  void remember(const std::string& key, std::shared_ptr<const HttpCacheEntry> entry);
  void forget(const std::string& key);

  Limits limits_;
  std::mutex mutex_;
  std::unique_ptr<SqliteDatabase> db_;
  Lru lru_;
  std::unordered_map<std::string, Lru::iterator> index_;
  std::size_t memoryBytes_ = 0;
};

}  // namespace quorvel
