#include "quorvel/session_store.h"

#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "quorvel/core_logger.h"

namespace quorvel {
namespace {

// The storing itself is the platform's JsonKeyValueStore (tested there); the
// session store's own part is where its problems go.
TEST(SessionStoreTest, AStoreProblemIsLoggedAsAnErrorAndTheStoreStillWorks) {
  const auto directory = std::filesystem::temp_directory_path() /
                         ("quorvel-session-test-" + std::to_string(std::random_device{}()));
  const auto file = directory / "session.sqlite";
  std::filesystem::create_directories(directory);
  std::ofstream(file, std::ios::binary) << std::string(8192, 'g');
  std::vector<std::string> errors;
  CoreLogger::setSink([&](LogLevel level, std::string_view message) {
    if (level == LogLevel::error) errors.emplace_back(message);
  });
  {
    SessionStore store(file);
    EXPECT_TRUE(store.persistent());
    EXPECT_TRUE(store.store(std::int64_t{5}, "k"));
  }
  CoreLogger::resetForTesting();
  EXPECT_EQ(errors.size(), 1u);
  EXPECT_EQ(SessionStore(file).value("k"), boost::json::value(std::int64_t{5}));
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace quorvel
