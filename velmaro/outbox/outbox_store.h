#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "velmaro/outbox/outbox_entry.h"

namespace quorvel::platform {
class SqliteDatabase;
}

namespace velmaro {

// The outbox's file (SQLite, "outbox.sqlite" in the core's data folder),
// shared by every process that uses the folder. Entries keep their order by
// id. Only one process sends at a time: it holds the sender lease (host,
// pid, expiry), which ends when it is released, when it expires, or at once
// when its holder ran on this host and is gone. Safe from any thread.
class OutboxStore {
 public:
  // A file kept to be uploaded before the call that names its token.
  struct KeptFile {
    std::string token;
    std::filesystem::path path;
    std::string name;
    std::string contentType;
  };

  OutboxStore(std::filesystem::path file, std::chrono::milliseconds leaseTime);
  ~OutboxStore();
  OutboxStore(const OutboxStore&) = delete;
  OutboxStore& operator=(const OutboxStore&) = delete;

  // The new entry's id; 0 when it could not be written.
  std::int64_t append(const OutboxEntry& entry);
  std::vector<OutboxEntry> entries();
  std::optional<OutboxEntry> first();
  std::size_t count();
  bool setState(std::int64_t id, OutboxEntry::State state, const std::string& lastError = {});
  // Counts one more attempt and marks the entry as on its way, durably,
  // before it is sent.
  bool markSending(std::int64_t id);
  void setTokens(std::int64_t id, const std::vector<std::string>& tokens, const std::string& body);
  void remove(std::int64_t id);

  bool addFile(const KeptFile& file);
  std::optional<KeptFile> file(const std::string& token);
  void removeFile(const std::string& token);

  // Takes or renews the sender lease for this process; false while another
  // live process holds it.
  bool acquireSender();
  void releaseSender();

 private:
  std::chrono::milliseconds leaseTime_;
  std::string host_;
  std::mutex mutex_;
  std::unique_ptr<quorvel::platform::SqliteDatabase> db_;
};

}  // namespace velmaro
