// String lookup between a host's bundle and the library's resource bundle.
#include "velmaro/util/qvk_localization.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "quorvel/core_logger.h"
#include "quorvel/platform/bundle.h"
#include "quorvel/platform/device_info.h"
#include "velmaro/util/qvk_bundle_utils.h"
#include "velmaro/version.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;
using quorvel::platform::Bundle;

constexpr const char* kSeeAll = "ios.QVKHelpCenter.helpCenterOverview.see_all.title";
constexpr const char* kSearch = "ios.QVKHelpCenter.search.placeholder";

class LocalizationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    host_ = fs::temp_directory_path() /
            ("velmaro-host-" + std::to_string(::getpid()) + "-" + std::to_string(counter_++));
    fs::create_directories(host_ / "en.lproj");
    quorvel::platform::DeviceInfo::setOverride(
        quorvel::platform::DeviceFacts{"test", "x86_64", {"en-US"}});
    resetAll();
    Bundle::setMain(host_);
    quorvel::CoreLogger::setSink([this](quorvel::LogLevel level, std::string_view message) {
      if (level >= quorvel::LogLevel::info) lines_.emplace_back(message);
    });
  }
  void TearDown() override {
    quorvel::CoreLogger::resetForTesting();
    quorvel::platform::DeviceInfo::setOverride(std::nullopt);
    resetAll();
    std::error_code ec;
    fs::remove_all(host_, ec);
  }
  static void resetAll() {
    QVKLocalization::resetForTesting();
    QVKBundleUtils::resetForTesting();
    Bundle::resetForTesting();
  }
  void write(const fs::path& relative, const std::string& text) {
    fs::create_directories((host_ / relative).parent_path());
    std::ofstream(host_ / relative) << text;
  }
  bool logged(std::string_view fragment) const {
    for (const auto& line : lines_) {
      if (line.find(fragment) != std::string::npos) return true;
    }
    return false;
  }

  fs::path host_;
  std::vector<std::string> lines_;
  static inline int counter_ = 0;
};

TEST_F(LocalizationTest, TheLibraryBundleIsFoundWithVersionAndStyleSheet) {
  const auto resources = QVKBundleUtils::frameworkResourceBundle();
  ASSERT_TRUE(resources) << "Dravik.bundle not found";
  EXPECT_EQ(resources->identifier(), "com.quorvel.Dravik");
  EXPECT_EQ(QVKBundleUtils::sdkVersion(), buildVersion());
  EXPECT_NE(QVKBundleUtils::helpCenterCss().find("img"), std::string::npos);
  ASSERT_TRUE(QVKBundleUtils::frameworkStringsBundle());
  EXPECT_FALSE(QVKBundleUtils::userDefinedHelpCenterCss());
  write("help_center_article_style.css", "body { color: red; }");
  EXPECT_EQ(QVKBundleUtils::userDefinedHelpCenterCss(), "body { color: red; }");
}

TEST_F(LocalizationTest, LibraryTextsWithoutHostOverrides) {
  write("en.lproj/Localizable.strings", "\"host.only.key\" = \"Mine\";\n");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSeeAll), "See all %d articles");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey("no.such.key"), "no.such.key");
  // The host's bundle overrides no library key, so it is not consulted.
  EXPECT_EQ(QVKLocalization::lookupBundles().size(), 1u);
  EXPECT_EQ(QVKLocalization::localizedStringWithKey("host.only.key"), "host.only.key");
  EXPECT_TRUE(logged("Localization key and value : \"" + std::string(kSeeAll) +
                     "\" = \"See all %d articles\";"));
}

TEST_F(LocalizationTest, AHostOverrideComesBeforeTheLibrary) {
  write("en.lproj/Localizable.strings", std::string("\"") + kSeeAll + "\" = \"All %d\";\n");
  const auto bundles = QVKLocalization::lookupBundles();
  ASSERT_EQ(bundles.size(), 2u);
  EXPECT_EQ(bundles[0], Bundle::main());
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSeeAll), "All %d");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSearch), "Search");
}

TEST_F(LocalizationTest, AnOtherwiseNamedTableNeedsRegistration) {
  write("en.lproj/Custom.strings", std::string("\"") + kSearch + "\" = \"Find\";\n");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSearch), "Search");
  EXPECT_TRUE(
      logged("If you have customised any localized strings in Custom.strings you need to "
             "register this with [QVKLocalization registerTableName:@\"your-table-name\"]."));
  QVKLocalization::registerTableName("Custom");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSearch), "Find");
  // Keys the custom table lacks still come from the library.
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSeeAll), "See all %d articles");
}

TEST_F(LocalizationTest, SubBundlesOfTheHostAreCandidates) {
  write("Extra.bundle/en.lproj/Localizable.strings",
        std::string("\"") + kSearch + "\" = \"Look up\";\n");
  EXPECT_EQ(QVKLocalization::localizedStringWithKey(kSearch), "Look up");
  EXPECT_EQ(QVKLocalization::lookupBundles().size(), 2u);
}

TEST_F(LocalizationTest, PrintAllKeysWritesACopyableTemplate) {
  QVKLocalization::printAllKeys();
  EXPECT_TRUE(logged(std::string("\n\"") + kSeeAll + "\" = \"<#new value#>\";"));
}

}  // namespace
}  // namespace velmaro
