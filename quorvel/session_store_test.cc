#include "quorvel/session_store.h"

#include <fstream>
#include <random>

#include <boost/json/parse.hpp>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "quorvel/core_logger.h"

namespace quorvel {
namespace {

class SessionStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::random_device random;
    directory_ = std::filesystem::temp_directory_path() /
                 ("quorvel-session-test-" + std::to_string(random()) + std::to_string(random()));
    file_ = directory_ / "session.sqlite";
  }
  void TearDown() override {
    CoreLogger::resetForTesting();
    std::error_code ec;
    std::filesystem::remove_all(directory_, ec);
  }

  std::filesystem::path directory_;
  std::filesystem::path file_;
};

TEST_F(SessionStoreTest, ValuesKeepTheirKindAcrossARestart) {
  const std::vector<std::pair<std::string, boost::json::value>> values = {
      {"double", 1.0},
      {"fraction", 0.25},
      {"integer", std::int64_t{1}},
      {"big", std::int64_t{9007199254740993}},
      {"text", "Bearer-free text"},
      {"flag", false},
      {"null", nullptr},
      {"object", boost::json::parse(R"({"a":[1,2.5,"x"],"b":{"c":null}})")},
  };
  {
    SessionStore store(file_);
    for (const auto& [key, value] : values) EXPECT_TRUE(store.store(value, key));
    store.store("gone", "removed");
    store.remove("removed");
  }
  SessionStore reopened(file_);
  for (const auto& [key, value] : values) {
    const auto read = reopened.value(key);
    ASSERT_TRUE(read) << key;
    EXPECT_EQ(*read, value) << key;
    EXPECT_EQ(read->kind(), value.kind()) << key;
  }
  EXPECT_FALSE(reopened.value("removed"));
  EXPECT_FALSE(reopened.value("never"));

  struct stat info {};
  ASSERT_EQ(::stat(file_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(SessionStoreTest, ACorruptFileIsMovedAsideWithAnErrorAndAFreshOneMade) {
  std::filesystem::create_directories(directory_);
  {
    std::ofstream garbage(file_, std::ios::binary);
    garbage << std::string(8192, 'g');
  }
  std::vector<std::string> errors;
  CoreLogger::setSink([&](LogLevel level, std::string_view message) {
    if (level == LogLevel::error) errors.emplace_back(message);
  });
  {
    SessionStore store(file_);
    EXPECT_TRUE(store.persistent());
    EXPECT_TRUE(store.store(std::int64_t{5}, "k"));
  }
  EXPECT_EQ(errors.size(), 1u);
  int asides = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory_)) {
    asides += entry.path().filename().string().find(".corrupt-") != std::string::npos ? 1 : 0;
  }
  EXPECT_EQ(asides, 1);
  EXPECT_EQ(SessionStore(file_).value("k"), boost::json::value(std::int64_t{5}));
}

}  // namespace
}  // namespace quorvel
