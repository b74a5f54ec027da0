#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace quorvel {

namespace platform {
class SqliteDatabase;
}

// The durable queue of blips waiting to be sent (SQLite), oldest first,
// shared by every process that uses the same data folder. A sender first
// claims a batch: the rows get a lease (a claim token, the holder's host and
// pid, an expiry) in one write transaction, and the other processes skip
// leased rows until the lease ends. The holder then removes the batch (the
// service accepted it) or releases it (the send failed). A lease whose holder
// died ends when it expires, or at once when the holder ran on this host and
// its pid is gone. Safe from any thread.
class BlipQueue {
 public:
  using Row = std::pair<std::int64_t, std::string>;  // id, blip JSON

  // The rows one claim leased; `lease` names them for remove() and release().
  struct Batch {
    std::string lease;
    std::vector<Row> rows;
  };

  // `leaseTime` must outlast the longest send, so that a live holder never
  // loses its batch to another process while its request can still succeed.
  BlipQueue(std::filesystem::path file, std::chrono::milliseconds leaseTime);
  ~BlipQueue();
  BlipQueue(const BlipQueue&) = delete;
  BlipQueue& operator=(const BlipQueue&) = delete;

  bool append(const std::string& blipJson);
  // Leases up to `limit` of the oldest rows that no live lease holds; no rows
  // when there are none (or the store is busy past its time-out).
  Batch claim(std::size_t limit);
  void remove(const std::string& lease);
  void release(const std::string& lease);
  // Every queued row, leased or not.
  std::size_t count();

 private:
  void addLeaseColumns();
  void endLeasesOfDeadHolders(std::int64_t now);
  std::vector<Row> lease(const std::string& token, std::size_t limit, std::int64_t now);

  std::chrono::milliseconds leaseTime_;
  std::string host_;
  std::mutex mutex_;
  std::unique_ptr<platform::SqliteDatabase> db_;
};

}  // namespace quorvel
