#include "velmaro/outbox/outbox_store.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "quorvel/core_logger.h"
#include "quorvel/local_process.h"
#include "quorvel/platform/sqlite_database.h"
#include "quorvel/platform/sqlite_statement.h"

namespace velmaro {

using quorvel::LocalProcess;
using quorvel::platform::SqliteDatabase;
using quorvel::platform::SqliteStatement;

namespace {

// Times are wall-clock milliseconds since 1970: processes compare them.
constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS outbox (id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "kind TEXT NOT NULL, request_id TEXT NOT NULL DEFAULT '', "
    "subject TEXT NOT NULL DEFAULT '', text TEXT NOT NULL, body TEXT NOT NULL DEFAULT '', "
    "tokens TEXT NOT NULL DEFAULT '[]', queued_at INTEGER NOT NULL, state TEXT NOT NULL, "
    "attempts INTEGER NOT NULL DEFAULT 0, last_error TEXT NOT NULL DEFAULT '');"
    "CREATE TABLE IF NOT EXISTS sender (one INTEGER PRIMARY KEY CHECK (one = 1), "
    "host TEXT NOT NULL, pid INTEGER NOT NULL, until INTEGER NOT NULL);"
    "CREATE TABLE IF NOT EXISTS files (token TEXT PRIMARY KEY, path TEXT NOT NULL, "
    "name TEXT NOT NULL, content_type TEXT NOT NULL)";

constexpr const char* kColumns =
    "SELECT id, kind, request_id, subject, text, body, tokens, queued_at, state, attempts, "
    "last_error FROM outbox";

std::int64_t toMs(std::chrono::system_clock::time_point time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
}

std::string tokensJson(const std::vector<std::string>& tokens) {
  return boost::json::serialize(boost::json::array(tokens.begin(), tokens.end()));
}

std::vector<std::string> tokensFrom(const std::string& text) {
  std::vector<std::string> tokens;
  boost::system::error_code ec;
  const auto value = boost::json::parse(text, ec);
  if (ec || !value.is_array()) return tokens;
  for (const auto& token : value.get_array()) {
    if (token.is_string()) tokens.emplace_back(token.get_string());
  }
  return tokens;
}

// A row with a kind this build does not know is left out, not guessed at.
std::optional<OutboxEntry> entryFrom(const SqliteStatement& row) {
  const auto kind = OutboxEntry::kindNamed(row.text(1));
  if (!kind) return std::nullopt;
  OutboxEntry entry;
  entry.id = row.integer(0);
  entry.kind = *kind;
  entry.requestId = row.text(2);
  entry.subject = row.text(3);
  entry.text = row.text(4);
  entry.body = row.text(5);
  entry.tokens = tokensFrom(row.text(6));
  entry.queuedAt = std::chrono::system_clock::time_point(std::chrono::milliseconds(row.integer(7)));
  entry.state = OutboxEntry::stateNamed(row.text(8));
  entry.attempts = row.integer(9);
  entry.lastError = row.text(10);
  return entry;
}

}  // namespace

OutboxStore::OutboxStore(std::filesystem::path file, std::chrono::milliseconds leaseTime)
    : leaseTime_(leaseTime),
      host_(LocalProcess::hostName()),
      db_(std::make_unique<SqliteDatabase>(std::move(file), kSchema, &quorvel::CoreLogger::error)) {
}

OutboxStore::~OutboxStore() = default;

std::int64_t OutboxStore::append(const OutboxEntry& entry) {
  std::lock_guard lock(mutex_);
  SqliteStatement insert(
      db_->handle(),
      "INSERT INTO outbox (kind, request_id, subject, text, body, tokens, "
      "queued_at, state, last_error) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
  insert.bind(1, OutboxEntry::name(entry.kind));
  insert.bind(2, entry.requestId);
  insert.bind(3, entry.subject);
  insert.bind(4, entry.text);
  insert.bind(5, entry.body);
  insert.bind(6, tokensJson(entry.tokens));
  insert.bind(7, toMs(entry.queuedAt));
  insert.bind(8, OutboxEntry::name(entry.state));
  insert.bind(9, entry.lastError);
  if (!insert.run()) {
    db_->report("Could not keep a call in the outbox");
    return 0;
  }
  SqliteStatement last(db_->handle(), "SELECT last_insert_rowid()");
  return last.step() ? last.integer(0) : 0;
}

std::vector<OutboxEntry> OutboxStore::entries() {
  std::lock_guard lock(mutex_);
  std::vector<OutboxEntry> entries;
  SqliteStatement select(db_->handle(), (std::string(kColumns) + " ORDER BY id").c_str());
  while (select.step()) {
    if (auto entry = entryFrom(select)) entries.push_back(std::move(*entry));
  }
  return entries;
}

std::optional<OutboxEntry> OutboxStore::first() {
  std::lock_guard lock(mutex_);
  SqliteStatement select(
      db_->handle(),
      (std::string(kColumns) + " WHERE kind IN ('request', 'comment') ORDER BY id LIMIT 1")
          .c_str());
  if (!select.step()) return std::nullopt;
  return entryFrom(select);
}

std::size_t OutboxStore::count() {
  std::lock_guard lock(mutex_);
  SqliteStatement select(db_->handle(), "SELECT COUNT(*) FROM outbox");
  return select.step() ? static_cast<std::size_t>(select.integer(0)) : 0;
}

bool OutboxStore::setState(std::int64_t id, OutboxEntry::State state,
                           const std::string& lastError) {
  std::lock_guard lock(mutex_);
  SqliteStatement update(db_->handle(),
                         "UPDATE outbox SET state = ?1, last_error = ?2 WHERE id = ?3");
  update.bind(1, OutboxEntry::name(state));
  update.bind(2, lastError);
  update.bind(3, id);
  return update.run();
}

bool OutboxStore::markSending(std::int64_t id) {
  std::lock_guard lock(mutex_);
  SqliteStatement update(db_->handle(),
                         "UPDATE outbox SET state = 'sending', attempts = attempts + 1 "
                         "WHERE id = ?1");
  update.bind(1, id);
  return update.run();
}

void OutboxStore::setTokens(std::int64_t id, const std::vector<std::string>& tokens,
                            const std::string& body) {
  std::lock_guard lock(mutex_);
  SqliteStatement update(db_->handle(), "UPDATE outbox SET tokens = ?1, body = ?2 WHERE id = ?3");
  update.bind(1, tokensJson(tokens));
  update.bind(2, body);
  update.bind(3, id);
  update.run();
}

void OutboxStore::remove(std::int64_t id) {
  std::lock_guard lock(mutex_);
  SqliteStatement remove(db_->handle(), "DELETE FROM outbox WHERE id = ?1");
  remove.bind(1, id);
  if (!remove.run()) db_->report("Could not remove a sent call from the outbox");
}

bool OutboxStore::addFile(const KeptFile& file) {
  std::lock_guard lock(mutex_);
  SqliteStatement insert(db_->handle(),
                         "INSERT INTO files (token, path, name, content_type) "
                         "VALUES (?1, ?2, ?3, ?4)");
  insert.bind(1, file.token);
  insert.bind(2, file.path.string());
  insert.bind(3, file.name);
  insert.bind(4, file.contentType);
  return insert.run();
}

std::optional<OutboxStore::KeptFile> OutboxStore::file(const std::string& token) {
  std::lock_guard lock(mutex_);
  SqliteStatement select(db_->handle(),
                         "SELECT path, name, content_type FROM files WHERE token = ?1");
  select.bind(1, token);
  if (!select.step()) return std::nullopt;
  return KeptFile{token, select.text(0), select.text(1), select.text(2)};
}

void OutboxStore::removeFile(const std::string& token) {
  std::lock_guard lock(mutex_);
  SqliteStatement remove(db_->handle(), "DELETE FROM files WHERE token = ?1");
  remove.bind(1, token);
  remove.run();
}

// The write lock is taken before the lease is read, so two processes never
// both find it free.
bool OutboxStore::acquireSender() {
  std::lock_guard lock(mutex_);
  if (!db_->execute("BEGIN IMMEDIATE")) return false;
  const auto now = toMs(std::chrono::system_clock::now());
  bool free = true;
  {
    SqliteStatement holder(db_->handle(), "SELECT host, pid, until FROM sender WHERE one = 1");
    if (holder.step()) {
      const bool self = holder.text(0) == host_ && holder.integer(1) == LocalProcess::id();
      const bool dead = holder.text(0) == host_ && LocalProcess::gone(holder.integer(1));
      free = self || dead || holder.integer(2) <= now;
    }
  }
  if (free) {
    SqliteStatement take(db_->handle(),
                         "INSERT OR REPLACE INTO sender (one, host, pid, until) "
                         "VALUES (1, ?1, ?2, ?3)");
    take.bind(1, host_);
    take.bind(2, LocalProcess::id());
    take.bind(3, now + leaseTime_.count());
    free = take.run();
  }
  if (!db_->execute(free ? "COMMIT" : "ROLLBACK")) {
    db_->execute("ROLLBACK");
    return false;
  }
  return free;
}

void OutboxStore::releaseSender() {
  std::lock_guard lock(mutex_);
  SqliteStatement release(db_->handle(), "DELETE FROM sender WHERE host = ?1 AND pid = ?2");
  release.bind(1, host_);
  release.bind(2, LocalProcess::id());
  release.run();
}

}  // namespace velmaro
