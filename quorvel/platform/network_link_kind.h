#pragma once

#include <string>
#include <string_view>

namespace quorvel::platform {

// What kind of link a network interface is, as the kernel describes it.
enum class NetworkLinkKind { other, wireless, cellular };

// From the interface's uevent text and whether it has a wireless directory
// (`wireless` or `phy80211` under /sys/class/net/<name>): cellular when the
// kernel's device type is "wwan", wireless when it has either directory.
NetworkLinkKind classifyNetworkLink(std::string_view uevent, bool hasWirelessDirectory);

// The kind of the interface `name`, read from `sysfsNet` (/sys/class/net).
// An interface sysfs does not show (another network namespace's) is `other`.
NetworkLinkKind networkLinkKindOf(const std::string& name,
                                  const std::string& sysfsNet = "/sys/class/net");

}  // namespace quorvel::platform
