#pragma once

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

// The durable queue of blips waiting to be sent (SQLite), oldest first.
// Safe from any thread.
class BlipQueue {
 public:
  using Row = std::pair<std::int64_t, std::string>;  // id, blip JSON

  explicit BlipQueue(std::filesystem::path file);
  ~BlipQueue();
  BlipQueue(const BlipQueue&) = delete;
  BlipQueue& operator=(const BlipQueue&) = delete;

  bool append(const std::string& blipJson);
  std::vector<Row> oldest(std::size_t limit);
  // Removes the rows with ids up to and including `lastId`.
  void removeThrough(std::int64_t lastId);
  std::size_t count();

 private:
  std::mutex mutex_;
  std::unique_ptr<platform::SqliteDatabase> db_;
};

}  // namespace quorvel
