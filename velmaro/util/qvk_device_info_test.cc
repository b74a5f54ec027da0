// The device dictionaries and the library's language, with the device facts
// overridden.
#include "velmaro/util/qvk_device_info.h"

#include <gtest/gtest.h>

#include "quorvel/platform/bundle.h"
#include "quorvel/platform/device_info.h"
#include "velmaro/util/qvk_bundle_utils.h"
#include "velmaro/util/qvk_device_info_dict.h"

namespace velmaro {
namespace {

using quorvel::platform::DeviceFacts;
using quorvel::platform::DeviceInfo;

class DeviceInfoDictTest : public ::testing::Test {
 protected:
  void SetUp() override {
    DeviceInfo::setOverride(DeviceFacts{"12", "aarch64", {"de-CH", "en-US"}});
    QVKBundleUtils::resetForTesting();
    quorvel::platform::Bundle::resetForTesting();
  }
  void TearDown() override { DeviceInfo::setOverride(std::nullopt); }
};

TEST_F(DeviceInfoDictTest, AnalyticsDictionary) {
  const boost::json::object expected{{"platform", "iOS"},
                                     {"sys_locale", "de-CH"},
                                     {"manufacturer", "Apple"},
                                     {"os", "12"},
                                     {"model", "aarch64"}};
  EXPECT_EQ(QVKDeviceInfoDict::getDeviceInfoDict(), expected);
}

TEST_F(DeviceInfoDictTest, RequestMetadataDictionary) {
  const boost::json::object expected{{"device_os", "12"}, {"device_model", "aarch64"}};
  EXPECT_EQ(QVKDeviceInfo::deviceInfoDictionary(), expected);
}

// The library ships German and English: Swiss German reads German.
TEST_F(DeviceInfoDictTest, LanguageIsTheLibrarysBestLocalization) {
  EXPECT_EQ(QVKDeviceInfo::region(), "de-CH");
  EXPECT_EQ(QVKDeviceInfo::language(), "de");
}

}  // namespace
}  // namespace velmaro
