#include "quorvel/platform/sqlite_database.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include "quorvel/platform/sqlite_statement.h"

namespace quorvel::platform {
namespace {

namespace fs = std::filesystem;

constexpr const char* kSchema = "CREATE TABLE IF NOT EXISTS t (v TEXT NOT NULL)";

// What is at the database's path before it is opened.
enum class Before { nothing, garbage, noPlaceForAFile, lockedPastTheBusyTimeout };

struct OpenCase {
  const char* name;
  Before before;
  bool persistent;
  int asides;    // files moved aside next to it
  int problems;  // lines told to the owner
};

class SqliteDatabaseTest : public testing::TestWithParam<OpenCase> {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("sqlite-test-" + std::to_string(std::random_device{}()));
    fs::create_directories(dir_);
  }
  void TearDown() override {
    if (holder_.joinable()) holder_.join();
    fs::remove_all(dir_);
  }

  fs::path fileFor(Before before) {
    if (before == Before::noPlaceForAFile) return "/proc/no-such-dir/store.sqlite";
    const auto file = dir_ / "store.sqlite";
    if (before == Before::garbage) std::ofstream(file, std::ios::binary) << std::string(8192, 'g');
    if (before == Before::lockedPastTheBusyTimeout) holdLocked(file);
    return file;
  }

  // Another process's connection holds the file's write lock a little longer
  // than one busy timeout (a rollback journal, so that readers wait too).
  void holdLocked(const fs::path& file) {
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "CREATE TABLE t (v TEXT NOT NULL); INSERT INTO t VALUES ('kept'); "
                           "BEGIN EXCLUSIVE; INSERT INTO t VALUES ('later')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    holder_ = std::jthread([other] {
      std::this_thread::sleep_for(std::chrono::milliseconds(2500));
      sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
      sqlite3_close(other);
    });
  }

  int asides() const {
    int count = 0;
    for (const auto& entry : fs::directory_iterator(dir_)) {
      count += entry.path().filename().string().find(".corrupt-") != std::string::npos ? 1 : 0;
    }
    return count;
  }

  SqliteDatabase::ProblemLog collect() {
    return [this](std::string_view line) { problems_.emplace_back(line); };
  }

  fs::path dir_;
  std::vector<std::string> problems_;
  std::jthread holder_;
};

// Reopening a good file as it is: JsonKeyValueStoreTest.
TEST_P(SqliteDatabaseTest, OpensWhatItCanAndSaysWhatItDid) {
  const auto& c = GetParam();
  const auto file = fileFor(c.before);
  {
    SqliteDatabase db(file, kSchema, collect());
    EXPECT_EQ(db.persistent(), c.persistent);
    // The schema is usable either way, on disk or in memory.
    EXPECT_TRUE(SqliteStatement(db.handle(), "INSERT INTO t (v) VALUES ('x')").run());
    EXPECT_EQ(db.checkpoint(), c.persistent);
    SqliteStatement mode(db.handle(), "PRAGMA journal_mode");
    ASSERT_TRUE(mode.step());
    EXPECT_EQ(mode.text(0), c.persistent ? "wal" : "memory");
  }
  EXPECT_EQ(asides(), c.asides);
  EXPECT_EQ(problems_.size(), static_cast<std::size_t>(c.problems));
  if (!c.persistent) return;
  struct stat info {};
  ASSERT_EQ(::stat(file.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600U);
}

INSTANTIATE_TEST_SUITE_P(Files, SqliteDatabaseTest,
                         testing::Values(OpenCase{"NewFile", Before::nothing, true, 0, 0},
                                         OpenCase{"CorruptFileMovedAside", Before::garbage, true, 1,
                                                  1},
                                         OpenCase{"NoPlaceForAFileKeepsItInMemory",
                                                  Before::noPlaceForAFile, false, 0, 1},
                                         // Processes starting together: busy is not damaged.
                                         OpenCase{"BusyFileIsWaitedForAndKept",
                                                  Before::lockedPastTheBusyTimeout, true, 0, 0}),
                         [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace quorvel::platform
