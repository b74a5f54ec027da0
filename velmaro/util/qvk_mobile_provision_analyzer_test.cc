// The provisioning environment from a profile in a temporary host bundle.
#include "velmaro/util/qvk_mobile_provision_analyzer.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "quorvel/platform/bundle.h"

namespace velmaro {
namespace {

namespace fs = std::filesystem;
using quorvel::platform::Bundle;

// A profile as it sits in its signed container: binary header, the XML
// property list, signature bytes after it.
std::string profile(const std::string& entries) {
  return std::string("0\x82\x1d\x1a\x06\x09*\x86H\x86\xf7\r\x01\x07\x02\xa0", 17) +
         "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
         "<key>Name</key><string>Test profile</string>\n" +
         entries + "</dict>\n</plist>\n" + std::string("\xa0\x82\x0b\x00\x30\x82\x05\x00", 8);
}

const std::string kOneDevice =
    "<key>ProvisionedDevices</key><array><string>00008030-001A</string></array>\n";
const std::string kTaskAllowFalse =
    "<key>Entitlements</key><dict><key>get-task-allow</key><false/></dict>\n";

enum class Plist { kEmpty, kAbsent, kPresent };

struct ProfileCase {
  const char* label;
  std::optional<std::string> file;  // nothing: no embedded profile
  const char* environment;
  Plist plist;
};

void PrintTo(const ProfileCase& c, std::ostream* os) {
  *os << c.label;
}

class MobileProvisionTest : public ::testing::TestWithParam<ProfileCase> {
 protected:
  void SetUp() override {
    host_ = fs::temp_directory_path() / ("velmaro-provision-" + std::to_string(::getpid()));
    fs::create_directories(host_);
    Bundle::resetForTesting();
    Bundle::setMain(host_);
    QVKMobileProvisionAnalyzer::resetForTesting();
  }
  void TearDown() override {
    QVKMobileProvisionAnalyzer::resetForTesting();
    Bundle::resetForTesting();
    std::error_code ec;
    fs::remove_all(host_, ec);
  }
  void writeProfile(const std::string& bytes) {
    std::ofstream(host_ / "embedded.mobileprovision", std::ios::binary) << bytes;
  }

  fs::path host_;
};

TEST_P(MobileProvisionTest, EnvironmentAndPlist) {
  if (GetParam().file) writeProfile(*GetParam().file);
  EXPECT_EQ(QVKMobileProvisionAnalyzer::getEnvironment(), GetParam().environment);
  const auto plist = QVKMobileProvisionAnalyzer::getMobileProvisionPlist();
  switch (GetParam().plist) {
    case Plist::kEmpty:
      EXPECT_EQ(plist, boost::json::object{});
      break;
    case Plist::kAbsent:
      EXPECT_FALSE(plist);
      break;
    case Plist::kPresent:
      ASSERT_TRUE(plist);
      EXPECT_EQ(plist->at("Name"), "Test profile");
      break;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, MobileProvisionTest,
    ::testing::Values(
        ProfileCase{"none", std::nullopt, "Development", Plist::kEmpty},
        ProfileCase{"emptyFile", "", "Development", Plist::kAbsent},
        ProfileCase{"allDevices", profile("<key>ProvisionsAllDevices</key><true/>\n"),
                    "Development", Plist::kPresent},
        ProfileCase{"oneDeviceTaskAllowFalse", profile(kOneDevice + kTaskAllowFalse), "Development",
                    Plist::kPresent},
        ProfileCase{"noDevices",
                    profile("<key>ProvisionsAllDevices</key><false/>\n" + kTaskAllowFalse),
                    "Production", Plist::kPresent},
        ProfileCase{"devicesNotAList",
                    profile("<key>ProvisionedDevices</key><string>00008030</string>\n"),
                    "Production", Plist::kPresent},
        ProfileCase{"junk", std::string("\x00\xff<plis\x01t junk", 14), "Development",
                    Plist::kAbsent},
        ProfileCase{"rootNotADictionary", "<plist version=\"1.0\"><array/></plist>", "Development",
                    Plist::kAbsent},
        ProfileCase{
            "overTheSizeLimit",
            profile(kOneDevice + "<key>Pad</key><string>" +
                    std::string(QVKMobileProvisionAnalyzer::kMaxProfileBytes, 'x') + "</string>\n"),
            "Development", Plist::kAbsent}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(MobileProvisionTest, TheFirstReadIsKeptForTheProcess) {
  writeProfile(profile(kOneDevice));
  ASSERT_EQ(QVKMobileProvisionAnalyzer::getEnvironment(), "Development");
  writeProfile(profile(""));
  EXPECT_EQ(QVKMobileProvisionAnalyzer::getEnvironment(), "Development");
}

}  // namespace
}  // namespace velmaro
