#include "quorvel/platform/json_key_value_store.h"

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

namespace quorvel::platform {
namespace {

namespace fs = std::filesystem;

class JsonKeyValueStoreTest : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("kv-test-" + std::to_string(std::random_device{}()));
    file_ = dir_ / "store.sqlite";
  }
  void TearDown() override { fs::remove_all(dir_); }

  // "values" is an SQL keyword: the store must quote its table's name.
  static JsonKeyValueStore open(const fs::path& file) { return {file, "values", nullptr}; }

  fs::path dir_;
  fs::path file_;
};

TEST_F(JsonKeyValueStoreTest, ValuesKeepTheirKindAcrossAReopen) {
  const std::vector<std::pair<std::string, boost::json::value>> values = {
      {"int", 42},
      {"negative", -7},
      {"big", std::int64_t{9007199254740993}},  // beyond a double's integers
      {"double", 1.0},
      {"fraction", 0.25},
      {"bool", false},
      {"null", nullptr},
      {"string", "héllo"},
      {"array", boost::json::array{1, "two", 3.5}},
      {"object", boost::json::parse(R"({"a":[1,2.5,"x"],"b":{"c":null}})")},
  };
  {
    auto store = open(file_);
    ASSERT_TRUE(store.persistent());
    for (const auto& [key, value] : values) EXPECT_TRUE(store.set(key, value)) << key;
    store.set("overwritten", 1);
    store.set("overwritten", "second");
    store.set("removed", 1);
    EXPECT_TRUE(store.remove("removed"));
    EXPECT_TRUE(store.synchronize());
  }
  auto reopened = open(file_);
  for (const auto& [key, value] : values) {
    const auto stored = reopened.value(key);
    ASSERT_TRUE(stored.has_value()) << key;
    EXPECT_EQ(*stored, value) << key;
    EXPECT_EQ(stored->kind(), value.kind()) << key;  // 1.0 stays a double, 42 an integer
  }
  EXPECT_EQ(reopened.value("overwritten"), boost::json::value("second"));
  EXPECT_FALSE(reopened.value("removed").has_value());
  EXPECT_EQ(reopened.keys().size(), values.size() + 1);
}

TEST_F(JsonKeyValueStoreTest, WithoutAFileValuesStayInMemoryAndWritesSaySo) {
  auto store = open("/proc/no-such-dir/store.sqlite");
  EXPECT_FALSE(store.persistent());
  EXPECT_FALSE(store.set("k", 1));
  EXPECT_EQ(store.value("k"), boost::json::value(1));
  EXPECT_FALSE(store.remove("k"));
  EXPECT_FALSE(store.value("k").has_value());
  EXPECT_FALSE(store.synchronize());
}

TEST_F(JsonKeyValueStoreTest, AnUpdateSeesAnotherConnectionsWrite) {
  auto first = open(file_);
  auto second = open(file_);
  ASSERT_TRUE(first.set("n", 1));
  EXPECT_EQ(second.currentValue("n"), boost::json::value(1));
  ASSERT_TRUE(second.update("n", [](auto current) {
    return boost::json::value(current && current->is_int64() ? current->as_int64() + 1 : -1);
  }));
  EXPECT_EQ(first.currentValue("n"), boost::json::value(2));
  EXPECT_EQ(first.value("n"), boost::json::value(2));
}

TEST_F(JsonKeyValueStoreTest, AReadInPlaceSeesAnotherConnectionsWrite) {
  auto first = open(file_);
  auto second = open(file_);
  ASSERT_TRUE(first.set("n", 1));
  auto shown = [&](const char* key) {
    std::optional<boost::json::value> seen;
    second.readCurrent(key, [&](const boost::json::value* current) {
      if (current != nullptr) seen = *current;
    });
    return seen;
  };
  EXPECT_EQ(shown("n"), boost::json::value(1));
  ASSERT_TRUE(first.set("n", 2));
  EXPECT_EQ(shown("n"), boost::json::value(2));
  EXPECT_EQ(shown("missing"), std::nullopt);
}

// A file that cannot grow (the file-size limit stands in for a full disk):
// the update fails, says why, and leaves the old value on disk and in memory.
TEST_F(JsonKeyValueStoreTest, AnUpdateThatCannotBeWrittenChangesNothing) {
  std::vector<std::string> problems;
  JsonKeyValueStore store(file_, "values",
                          [&](std::string_view line) { problems.emplace_back(line); });
  ASSERT_TRUE(store.set("big", "small"));
  boost::json::object big;
  for (int i = 0; i < 2000; ++i) big[std::to_string(i)] = std::string(50, 'x');

  rlimit saved{};
  getrlimit(RLIMIT_FSIZE, &saved);
  const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
  std::uintmax_t largest = 0;
  for (const auto& entry : fs::directory_iterator(dir_))
    largest = std::max(largest, entry.file_size());
  rlimit limited = saved;
  limited.rlim_cur = largest;
  setrlimit(RLIMIT_FSIZE, &limited);
  const bool updated = store.update("big", [&](auto) { return big; });
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, oldHandler);

  EXPECT_FALSE(updated);
  ASSERT_FALSE(problems.empty());
  EXPECT_NE(problems.back().find("Cannot write big in "), std::string::npos) << problems.back();
  EXPECT_EQ(store.value("big"), boost::json::value("small"));
  EXPECT_EQ(open(file_).value("big"), boost::json::value("small"));
  EXPECT_TRUE(store.update("big", [&](auto) { return big; }));
}

}  // namespace
}  // namespace quorvel::platform
