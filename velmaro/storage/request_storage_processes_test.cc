// The request store shared by writers that do not know of each other: two
// connections writing at once, and a process killed in the middle of writes.
#include <chrono>
#include <filesystem>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "velmaro/storage/request_storage.h"
#include "velmaro/storage/session_store_backend.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;

class RequestStorageProcessesTest : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("request-procs-" + std::to_string(std::random_device{}()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  // A store with its own connection to the shared file.
  RequestStorage open() const {
    return RequestStorage(std::make_shared<SessionStoreBackend>(
        std::make_shared<quorvel::SessionStore>(dir_ / "session.sqlite")));
  }

  std::string integrityCheck() const {
    sqlite3* db = nullptr;
    std::string result = "cannot open";
    if (sqlite3_open_v2((dir_ / "session.sqlite").c_str(), &db, SQLITE_OPEN_READONLY, nullptr) ==
        SQLITE_OK) {
      sqlite3_exec(
          db, "PRAGMA integrity_check",
          [](void* out, int, char** values, char**) {
            *static_cast<std::string*>(out) = values[0] != nullptr ? values[0] : "";
            return 0;
          },
          &result, nullptr);
    }
    sqlite3_close(db);
    return result;
  }

  fs::path dir_;
};

// Each writer adds its own 500 ids, then reads each back and marks one more
// comment read; no entry or count may be lost to the other writer.
TEST_F(RequestStorageProcessesTest, TwoConnectionsWritingAtOnceLoseNothing) {
  constexpr int kPerWriter = 500;
  auto writer = [this](const std::string& prefix) {
    auto store = open();
    for (int i = 0; i < kPerWriter; ++i) {
      ASSERT_TRUE(store.storeRequest(RequestForStorage(prefix + std::to_string(i), 3, 0)));
    }
    for (int i = 0; i < kPerWriter; ++i) {
      auto record = store.getRequestForId(prefix + std::to_string(i));
      ASSERT_TRUE(record);
      record->setReadCommentCount(record->readCommentCount() + 1);
      ASSERT_TRUE(store.storeRequest(record));
    }
  };
  std::thread first(writer, "a");
  std::thread second(writer, "b");
  first.join();
  second.join();

  const auto records = open().getRequests();
  ASSERT_EQ(records.size(), 2u * kPerWriter);
  for (const auto& record : records) {
    EXPECT_EQ(record.commentCount(), 3) << record.requestId();
    EXPECT_EQ(record.readCommentCount(), 1) << record.requestId();
  }
}

// A child stores requests in a loop until it is killed; whatever moment the
// kill lands on, the file passes its integrity check and holds a whole
// dictionary: ids 0..n-1 with their counts, nothing torn.
TEST_F(RequestStorageProcessesTest, AKilledWriterLeavesAWholeDictionary) {
  std::mt19937 random(7);
  std::size_t lastCount = 0;
  for (int round = 0; round < 20; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      auto store = open();
      const auto start = store.getRequests().size();
      for (std::size_t i = start; i < start + 100000; ++i) {
        store.storeRequestsAndResetCacheTime({RequestForStorage(std::to_string(i), 2, 1)});
      }
      _exit(0);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5 + random() % 40));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);

    ASSERT_EQ(integrityCheck(), "ok") << "round " << round;
    const auto records = open().getRequests();
    ASSERT_GE(records.size(), lastCount) << "round " << round;
    for (std::size_t i = 0; i < records.size(); ++i) {
      ASSERT_EQ(records[i], RequestForStorage(std::to_string(i), 2, 1)) << "round " << round;
    }
    lastCount = records.size();
  }
  EXPECT_GT(lastCount, 0u);
}

}  // namespace
}  // namespace velmaro
