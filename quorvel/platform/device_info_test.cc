#include "quorvel/platform/device_info.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

TEST(DeviceInfoTest, PosixLocaleNamesBecomeLanguageTags) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"de_CH.UTF-8", "de-CH"},  {"en_US", "en-US"},  {"fr", "fr"},
      {"sr_RS@latin", "sr-RS"},  {"C", std::nullopt}, {"POSIX", std::nullopt},
      {"C.UTF-8", std::nullopt}, {"", std::nullopt},
  };
  for (const auto& [posix, tag] : cases) EXPECT_EQ(DeviceInfo::languageTag(posix), tag) << posix;
}

TEST(DeviceInfoTest, OsReleaseVersion) {
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\nID=debian\n", "12"},
      {"VERSION_ID=3.19.1", "3.19.1"},
      {"VERSION_ID='22.04'", "22.04"},
      {"VERSION_ID=\"\"", std::nullopt},
      {"NAME=sid\nVERSION_CODENAME=trixie", std::nullopt},
  };
  for (const auto& [text, version] : cases) {
    EXPECT_EQ(DeviceInfo::osReleaseVersion(text), version) << text;
  }
}

// The override is the tests' own hook: every test that sets languages uses it.
TEST(DeviceInfoTest, TheSystemAlwaysNamesAMachineAndALanguage) {
  const auto system = DeviceInfo::current();
  EXPECT_FALSE(system.preferredLanguages.empty());
  EXPECT_FALSE(system.machine.empty());
}

}  // namespace
}  // namespace quorvel::platform
