#include "quorvel/http_cache.h"

#include "quorvel/core_logger.h"
#include "quorvel/platform/sqlite_database.h"
#include "quorvel/platform/sqlite_statement.h"

namespace quorvel {

using platform::SqliteDatabase;
using platform::SqliteStatement;

namespace {

constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS responses (key TEXT PRIMARY KEY, url TEXT NOT NULL, "
    "http_version TEXT NOT NULL, headers TEXT NOT NULL, body BLOB NOT NULL, "
    "stored_at REAL NOT NULL, fresh_until REAL NOT NULL)";

constexpr std::chrono::milliseconds kWriteDelay{100};

std::size_t sizeOf(const HttpCacheEntry& entry) {
  return entry.body->size() + entry.url.size() + 64 * entry.headers->size();
}

}  // namespace

HttpCache::HttpCache(std::filesystem::path file) : HttpCache(std::move(file), Limits{}) {}

HttpCache::HttpCache(std::filesystem::path file, Limits limits)
    : limits_(limits),
      db_(std::make_unique<SqliteDatabase>(std::move(file), kSchema, &CoreLogger::error)) {
  loadDiskKeys();
  writer_ = std::thread([this] { runWriter(); });
}

HttpCache::~HttpCache() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  delay_.notify_all();
  writer_.join();  // the writer empties the queue before it ends
}

std::shared_ptr<const HttpCacheEntry> HttpCache::lookup(const std::string& key) {
  {
    std::lock_guard lock(mutex_);
    if (const auto it = index_.find(key); it != index_.end()) {
      lru_.splice(lru_.begin(), lru_, it->second);
      return it->second->second;
    }
    if (const auto it = pending_.find(key); it != pending_.end()) return it->second;
    if (!diskKeys_.contains(key)) return nullptr;  // a miss costs no query
  }
  std::shared_ptr<const HttpCacheEntry> entry;
  {
    // A batch the writer took is in the file by the time this lock is ours.
    std::lock_guard db(dbMutex_);
    entry = loadFromDisk(key);
  }
  if (entry) {
    std::lock_guard lock(mutex_);
    remember(key, entry);
  }
  return entry;
}

void HttpCache::store(const std::string& key, HttpCacheEntry entry) {
  auto shared = std::make_shared<const HttpCacheEntry>(std::move(entry));
  bool wakeWriter = false;
  {
    std::lock_guard lock(mutex_);
    remember(key, shared);
    diskKeys_.insert(key);
    // Only the first store of a batch wakes the writer: a wake-up per store
    // would cost every answer a system call and a thread switch.
    wakeWriter = writerIdle_ && pending_.empty();
    pending_[key] = std::move(shared);
  }
  if (wakeWriter) wake_.notify_one();
}

void HttpCache::flush() {
  std::unique_lock lock(mutex_);
  flushRequested_ = true;
  wake_.notify_all();
  delay_.notify_all();
  written_.wait(lock, [this] { return pending_.empty() && !writing_; });
}

void HttpCache::remove(const std::string& key) {
  std::lock_guard lock(mutex_);
  forget(key);
  pending_.erase(key);
  if (diskKeys_.erase(key) == 0) return;  // never stored: nothing to delete
  std::lock_guard db(dbMutex_);
  SqliteStatement del(db_->handle(), "DELETE FROM responses WHERE key = ?1");
  del.bind(1, key);
  del.run();
}

void HttpCache::clear() {
  std::lock_guard lock(mutex_);
  lru_.clear();
  index_.clear();
  memoryBytes_ = 0;
  pending_.clear();
  diskKeys_.clear();
  std::lock_guard db(dbMutex_);
  db_->execute("DELETE FROM responses");
}

void HttpCache::runWriter() {
  std::unique_lock lock(mutex_);
  for (;;) {
    writerIdle_ = true;
    wake_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
    writerIdle_ = false;
    if (pending_.empty()) return;  // stopping, and everything is written
    // Lets the answer that was just stored reach its caller first, and
    // gathers what else arrives meanwhile into the same transaction.
    delay_.wait_for(lock, kWriteDelay, [this] { return stopping_ || flushRequested_; });
    flushRequested_ = false;
    if (pending_.empty()) continue;  // a clear() came first: nothing to write
    Pending batch;
    batch.swap(pending_);
    writing_ = true;
    const bool trim = diskKeys_.size() > limits_.diskEntries;
    // Taken before the state lock is let go, so that a lookup that no longer
    // finds these entries pending waits for them to be in the file.
    std::unique_lock db(dbMutex_);
    lock.unlock();
    writeBatch(batch);
    if (trim) {
      // Keeps the file bounded: the entries stored longest ago go first.
      SqliteStatement drop(db_->handle(),
                           "DELETE FROM responses WHERE key IN (SELECT key FROM responses "
                           "ORDER BY stored_at DESC LIMIT -1 OFFSET ?1)");
      drop.bind(1, static_cast<std::int64_t>(limits_.diskEntries));
      drop.run();
    }
    db.unlock();
    if (trim) loadDiskKeys();
    lock.lock();
    writing_ = false;
    written_.notify_all();
  }
}

void HttpCache::loadDiskKeys() {
  std::unordered_set<std::string> keys;
  {
    std::lock_guard db(dbMutex_);
    SqliteStatement select(db_->handle(), "SELECT key FROM responses");
    while (select.step()) keys.insert(select.text(0));
  }
  std::lock_guard lock(mutex_);
  for (const auto& [key, entry] : pending_) keys.insert(key);
  diskKeys_.swap(keys);
}

std::shared_ptr<const HttpCacheEntry> HttpCache::loadFromDisk(const std::string& key) {
  SqliteStatement select(db_->handle(),
                         "SELECT url, http_version, headers, body, stored_at, fresh_until "
                         "FROM responses WHERE key = ?1");
  select.bind(1, key);
  if (!select.step()) return nullptr;
  auto entry = std::make_shared<HttpCacheEntry>();
  entry->url = select.text(0);
  entry->httpVersion = select.text(1);
  entry->headers =
      std::make_shared<const HttpHeaderFields>(HttpCacheEntry::headersFromJson(select.text(2)));
  entry->body = std::make_shared<const std::string>(select.text(3));
  entry->storedAt = select.real(4);
  entry->freshUntil = select.real(5);
  return entry;
}

void HttpCache::writeBatch(const Pending& batch) {
  db_->execute("BEGIN");
  SqliteStatement upsert(db_->handle(),
                         "INSERT OR REPLACE INTO responses (key, url, http_version, headers, "
                         "body, stored_at, fresh_until) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  for (const auto& [key, entry] : batch) {
    upsert.bind(1, key);
    upsert.bind(2, entry->url);
    upsert.bind(3, entry->httpVersion);
    upsert.bind(4, HttpCacheEntry::headersToJson(*entry->headers));
    upsert.bindBlob(5, *entry->body);
    upsert.bind(6, entry->storedAt);
    upsert.bind(7, entry->freshUntil);
    upsert.run();
    upsert.reset();
  }
  db_->execute("COMMIT");
}

void HttpCache::remember(const std::string& key, std::shared_ptr<const HttpCacheEntry> entry) {
  forget(key);
  const std::size_t size = sizeOf(*entry);
  if (size > limits_.memoryBytes) return;
  lru_.emplace_front(key, std::move(entry));
  index_[key] = lru_.begin();
  memoryBytes_ += size;
  while (lru_.size() > limits_.memoryEntries || memoryBytes_ > limits_.memoryBytes) {
    memoryBytes_ -= sizeOf(*lru_.back().second);
    index_.erase(lru_.back().first);
    lru_.pop_back();
  }
}

void HttpCache::forget(const std::string& key) {
  const auto it = index_.find(key);
  if (it == index_.end()) return;
  memoryBytes_ -= sizeOf(*it->second->second);
  lru_.erase(it->second);
  index_.erase(it);
}

}  // namespace quorvel
