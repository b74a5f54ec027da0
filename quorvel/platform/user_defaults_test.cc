#include "quorvel/platform/user_defaults.h"

#include <filesystem>
#include <random>

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

// Storing is JsonKeyValueStore's (tested there); this is the standard store.
TEST(UserDefaultsTest, StandardStoreFollowsTheChosenPath) {
  const auto dir = std::filesystem::temp_directory_path() /
                   ("ud-test-" + std::to_string(std::random_device{}()));
  UserDefaults::setStandardPath(dir / "UserDefaults.sqlite");
  UserDefaults::standard()->set("k", "v");
  EXPECT_EQ(UserDefaults::standard()->path(), dir / "UserDefaults.sqlite");
  UserDefaults::setStandardPath(dir / "other.sqlite");
  EXPECT_FALSE(UserDefaults::standard()->value("k").has_value());
  UserDefaults::setStandardPath(dir / "UserDefaults.sqlite");
  EXPECT_EQ(UserDefaults::standard()->value("k"), boost::json::value("v"));
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace quorvel::platform
