#include "quorvel/platform/user_defaults.h"

#include <filesystem>
#include <fstream>
#include <random>

#include <boost/json.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace quorvel::platform {
namespace {

namespace fs = std::filesystem;

class UserDefaultsTest : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("ud-test-" + std::to_string(std::random_device{}()));
    fs::create_directories(dir_);
    file_ = dir_ / "UserDefaults.sqlite";
  }
  void TearDown() override { fs::remove_all(dir_); }

  fs::path dir_;
  fs::path file_;
};

TEST_F(UserDefaultsTest, ValuesKeepTheirKindAcrossAReopen) {
  const std::vector<std::pair<std::string, boost::json::value>> values = {
      {"int", 42},
      {"negative", -7},
      {"double", 1.0},
      {"fraction", 0.25},
      {"bool", true},
      {"null", nullptr},
      {"string", "héllo"},
      {"array", boost::json::array{1, "two", 3.5}},
      {"object", boost::json::object{{"ids", boost::json::array{1, 2}}}},
  };
  {
    UserDefaults defaults(file_);
    ASSERT_TRUE(defaults.persistent());
    for (const auto& [key, value] : values) EXPECT_TRUE(defaults.set(key, value)) << key;
  }
  UserDefaults reopened(file_);
  for (const auto& [key, value] : values) {
    auto stored = reopened.value(key);
    ASSERT_TRUE(stored.has_value()) << key;
    EXPECT_EQ(*stored, value) << key;
    EXPECT_EQ(stored->kind(), value.kind()) << key;  // 1.0 stays a double, 42 an integer
  }
}

TEST_F(UserDefaultsTest, RemoveAndOverwriteSurviveAReopen) {
  {
    UserDefaults defaults(file_);
    defaults.set("a", 1);
    defaults.set("b", 2);
    defaults.set("a", "replaced");
    defaults.remove("b");
    EXPECT_TRUE(defaults.synchronize());
  }
  UserDefaults reopened(file_);
  EXPECT_EQ(reopened.value("a"), boost::json::value("replaced"));
  EXPECT_FALSE(reopened.value("b").has_value());
  EXPECT_EQ(reopened.keys(), std::vector<std::string>{"a"});
}

TEST_F(UserDefaultsTest, FileIsReadableByTheUserOnly) {
  UserDefaults defaults(file_);
  defaults.set("k", 1);
  struct stat info {};
  ASSERT_EQ(::stat(file_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600U);
}

TEST_F(UserDefaultsTest, ACorruptFileIsMovedAsideAndAFreshStoreMade) {
  {
    std::ofstream garbage(file_, std::ios::binary);
    garbage << std::string(4096, 'x');
  }
  UserDefaults defaults(file_);
  EXPECT_TRUE(defaults.persistent());
  EXPECT_TRUE(defaults.keys().empty());
  EXPECT_TRUE(defaults.set("k", 1));
  auto aside = file_;
  aside += ".corrupt";
  EXPECT_TRUE(fs::exists(aside));
}

TEST_F(UserDefaultsTest, AnUnwritableLocationKeepsValuesInMemoryAndSaysSo) {
  UserDefaults defaults("/proc/no-such-dir/UserDefaults.sqlite");
  EXPECT_FALSE(defaults.persistent());
  EXPECT_FALSE(defaults.set("k", 1));
  EXPECT_EQ(defaults.value("k"), boost::json::value(1));
}

TEST_F(UserDefaultsTest, StandardStoreFollowsTheChosenPath) {
  UserDefaults::setStandardPath(file_);
  UserDefaults::standard()->set("k", "v");
  EXPECT_EQ(UserDefaults::standard()->path(), file_);
  UserDefaults::setStandardPath(dir_ / "other.sqlite");
  EXPECT_FALSE(UserDefaults::standard()->value("k").has_value());
}

}  // namespace
}  // namespace quorvel::platform
