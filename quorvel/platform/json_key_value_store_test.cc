#include "quorvel/platform/json_key_value_store.h"

#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace quorvel::platform
