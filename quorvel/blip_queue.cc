#include "quorvel/blip_queue.h"

#include "quorvel/core_logger.h"
#include "quorvel/local_process.h"
#include "quorvel/platform/sqlite_database.h"
#include "quorvel/platform/sqlite_statement.h"
#include "quorvel/random_uuid.h"

namespace quorvel {

using platform::SqliteDatabase;
using platform::SqliteStatement;

namespace {

// lease_until is wall-clock milliseconds since 1970: processes compare it,
// so it cannot be a steady clock. 0 means free.
constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS blips (id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "blip TEXT NOT NULL, lease_owner TEXT NOT NULL DEFAULT '', "
    "lease_host TEXT NOT NULL DEFAULT '', lease_pid INTEGER NOT NULL DEFAULT 0, "
    "lease_until INTEGER NOT NULL DEFAULT 0)";

std::int64_t nowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

BlipQueue::BlipQueue(std::filesystem::path file, std::chrono::milliseconds leaseTime)
    : leaseTime_(leaseTime),
      host_(LocalProcess::hostName()),
      db_(std::make_unique<SqliteDatabase>(std::move(file), kSchema, &CoreLogger::error)) {
  addLeaseColumns();
}

BlipQueue::~BlipQueue() = default;

// A queue written before leases existed has only id and blip: its rows stay
// and become free rows. Two processes opening it at once are serialised by
// the write lock, and the second finds the columns there.
void BlipQueue::addLeaseColumns() {
  if (!db_->execute("BEGIN IMMEDIATE")) return db_->report("Could not upgrade the blip queue");
  bool hasLeases = false;
  {
    SqliteStatement columns(db_->handle(),
                            "SELECT 1 FROM pragma_table_info('blips') "
                            "WHERE name = 'lease_until'");
    hasLeases = columns.step();
  }
  const bool upgraded =
      hasLeases || db_->execute(
                       "ALTER TABLE blips ADD COLUMN lease_owner TEXT NOT NULL DEFAULT '';"
                       "ALTER TABLE blips ADD COLUMN lease_host TEXT NOT NULL DEFAULT '';"
                       "ALTER TABLE blips ADD COLUMN lease_pid INTEGER NOT NULL DEFAULT 0;"
                       "ALTER TABLE blips ADD COLUMN lease_until INTEGER NOT NULL "
                       "DEFAULT 0");
  if (!upgraded) db_->report("Could not upgrade the blip queue");
  db_->execute(upgraded ? "COMMIT" : "ROLLBACK");
}

bool BlipQueue::append(const std::string& blipJson) {
  std::lock_guard lock(mutex_);
  SqliteStatement insert(db_->handle(), "INSERT INTO blips (blip) VALUES (?1)");
  insert.bind(1, blipJson);
  return insert.run();
}

BlipQueue::Batch BlipQueue::claim(std::size_t limit) {
  std::lock_guard lock(mutex_);
  Batch batch{randomUuid(), {}};
  // The write lock is taken before anything is read, so two processes never
  // both see the same rows as free.
  if (!db_->execute("BEGIN IMMEDIATE")) {
    db_->report("Could not claim queued blips");
    return batch;
  }
  const auto now = nowMs();
  endLeasesOfDeadHolders(now);
  batch.rows = lease(batch.lease, limit, now);
  if (!db_->execute("COMMIT")) {
    db_->report("Could not claim queued blips");
    db_->execute("ROLLBACK");
    batch.rows.clear();
  }
  return batch;
}

// A holder killed while its batch was in flight would otherwise keep the
// rows until the lease expires; on this host its vanished pid says so now.
// Another pid namespace on the same host may make a live holder look gone:
// its batch is then sent twice, and the blip ids let the service drop the
// repeat.
void BlipQueue::endLeasesOfDeadHolders(std::int64_t now) {
  std::vector<std::int64_t> gone;
  {
    SqliteStatement holders(db_->handle(),
                            "SELECT DISTINCT lease_pid FROM blips WHERE lease_until > ?1 "
                            "AND lease_host = ?2 AND lease_pid <> ?3");
    holders.bind(1, now);
    holders.bind(2, host_);
    holders.bind(3, LocalProcess::id());
    while (holders.step()) {
      if (LocalProcess::gone(holders.integer(0))) gone.push_back(holders.integer(0));
    }
  }
  for (const auto pid : gone) {
    SqliteStatement end(
        db_->handle(), "UPDATE blips SET lease_until = 0 WHERE lease_host = ?1 AND lease_pid = ?2");
    end.bind(1, host_);
    end.bind(2, pid);
    end.run();
  }
}

std::vector<BlipQueue::Row> BlipQueue::lease(const std::string& token, std::size_t limit,
                                             std::int64_t now) {
  SqliteStatement take(db_->handle(),
                       "UPDATE blips SET lease_owner = ?1, lease_host = ?2, lease_pid = ?3, "
                       "lease_until = ?4 WHERE id IN (SELECT id FROM blips WHERE lease_until <= ?5 "
                       "ORDER BY id LIMIT ?6)");
  take.bind(1, token);
  take.bind(2, host_);
  take.bind(3, LocalProcess::id());
  take.bind(4, now + leaseTime_.count());
  take.bind(5, now);
  take.bind(6, static_cast<std::int64_t>(limit));
  std::vector<Row> rows;
  if (!take.run()) return rows;
  SqliteStatement select(db_->handle(),
                         "SELECT id, blip FROM blips WHERE lease_owner = ?1 ORDER BY id");
  select.bind(1, token);
  while (select.step()) rows.emplace_back(select.integer(0), select.text(1));
  return rows;
}

void BlipQueue::remove(const std::string& lease) {
  std::lock_guard lock(mutex_);
  SqliteStatement statement(db_->handle(), "DELETE FROM blips WHERE lease_owner = ?1");
  statement.bind(1, lease);
  if (!statement.run()) db_->report("Could not remove sent blips");
}

void BlipQueue::release(const std::string& lease) {
  std::lock_guard lock(mutex_);
  SqliteStatement statement(db_->handle(),
                            "UPDATE blips SET lease_owner = '', lease_until = 0 "
                            "WHERE lease_owner = ?1");
  statement.bind(1, lease);
  statement.run();
}

std::size_t BlipQueue::count() {
  std::lock_guard lock(mutex_);
  SqliteStatement select(db_->handle(), "SELECT COUNT(*) FROM blips");
  return select.step() ? static_cast<std::size_t>(select.integer(0)) : 0;
}

}  // namespace quorvel
