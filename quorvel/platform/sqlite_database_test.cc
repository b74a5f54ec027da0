#include "quorvel/platform/sqlite_database.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
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

// A folder of its own per test, and what the database tells its owner.
class SqliteFolderTest : public testing::Test {
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
      // The database itself; its log and index go along as <aside>-wal, -shm.
      const auto name = entry.path().filename().string();
      count += name.find(".corrupt-") != std::string::npos && !name.ends_with("-wal") &&
                       !name.ends_with("-shm")
                   ? 1
                   : 0;
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

class SqliteDatabaseTest : public SqliteFolderTest, public testing::WithParamInterface<OpenCase> {};

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

// The first statement to read the damaged table meets it after the open.
struct InUseCase {
  const char* name;
  std::function<bool(SqliteDatabase&)> first;
};

class SqliteDatabaseDamageTest : public SqliteFolderTest,
                                 public testing::WithParamInterface<InUseCase> {
 protected:
  // A table over a few pages, closed, then 8 KB of garbage past the first
  // page (the schema), so that the file still opens.
  fs::path damagedFile() {
    const auto file = dir_ / "store.sqlite";
    {
      SqliteDatabase db(file, kSchema, collect());
      db.execute(
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200) "
          "INSERT INTO t (v) SELECT printf('%0100d', i) FROM n");
    }
    std::fstream out(file, std::ios::in | std::ios::out | std::ios::binary);
    out.seekp(4096);
    out << std::string(8192, 'g');
    return file;
  }
};

TEST_P(SqliteDatabaseDamageTest, AStatementThatMeetsDamageMovesTheFileAsideAndFails) {
  SqliteDatabase db(damagedFile(), kSchema, collect());
  ASSERT_TRUE(db.persistent()) << "opens: the damage is past the schema";
  EXPECT_FALSE(GetParam().first(db));
  EXPECT_TRUE(db.persistent());
  EXPECT_EQ(asides(), 1);
  ASSERT_EQ(problems_.size(), 1u);
  EXPECT_NE(problems_[0].find("moved it aside"), std::string::npos) << problems_[0];
  // The owner's next statement runs on a fresh, empty file.
  EXPECT_TRUE(SqliteStatement(db.handle(), "INSERT INTO t (v) VALUES ('x')").run());
  SqliteStatement count(db.handle(), "SELECT COUNT(*) FROM t");
  ASSERT_TRUE(count.step());
  EXPECT_EQ(count.integer(0), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Statements, SqliteDatabaseDamageTest,
    testing::Values(
        InUseCase{"Read",
                  [](SqliteDatabase& db) {
                    SqliteStatement select(db.handle(), "SELECT v FROM t");
                    int rows = 0;
                    while (rows < 1000 && select.step()) ++rows;
                    return rows == 200;
                  }},
        InUseCase{"Write",
                  [](SqliteDatabase& db) {
                    return SqliteStatement(db.handle(), "INSERT INTO t (v) VALUES ('y')").run();
                  }},
        InUseCase{"Execute", [](SqliteDatabase& db) { return db.execute("DELETE FROM t"); }}),
    [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace quorvel::platform
