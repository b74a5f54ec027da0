// Link kinds from what the kernel says of an interface.
#include "quorvel/platform/network_link_kind.h"

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

struct LinkCase {
  const char* label;
  const char* uevent;
  bool wirelessDirectory;
  NetworkLinkKind expected;
};

class NetworkLinkKindTest : public ::testing::TestWithParam<LinkCase> {};

TEST_P(NetworkLinkKindTest, Classify) {
  EXPECT_EQ(classifyNetworkLink(GetParam().uevent, GetParam().wirelessDirectory),
            GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, NetworkLinkKindTest,
    ::testing::Values(
        LinkCase{"ethernet", "INTERFACE=eth0\nIFINDEX=2\n", false, NetworkLinkKind::other},
        LinkCase{"wwanModem", "DEVTYPE=wwan\nINTERFACE=wwan0\nIFINDEX=3\n", false,
                 NetworkLinkKind::cellular},
        LinkCase{"wwanLastLineWithoutNewline", "INTERFACE=wwan0\nDEVTYPE=wwan", false,
                 NetworkLinkKind::cellular},
        LinkCase{"cellularWinsOverWireless", "DEVTYPE=wwan\n", true, NetworkLinkKind::cellular},
        LinkCase{"wlanDevtypeWithWirelessDir", "DEVTYPE=wlan\nINTERFACE=wlan0\n", true,
                 NetworkLinkKind::wireless},
        LinkCase{"otherDevtypeIsNotCellular", "DEVTYPE=wwanx\nDEVTYPE=bridge\n", false,
                 NetworkLinkKind::other},
        LinkCase{"valueInsideAnotherLine", "INTERFACE=DEVTYPE=wwan\n", false,
                 NetworkLinkKind::other},
        LinkCase{"noUeventAtAll", "", false, NetworkLinkKind::other}),
    [](const auto& param) { return std::string(param.param.label); });

}  // namespace
}  // namespace quorvel::platform
