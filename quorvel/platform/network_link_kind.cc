#include "quorvel/platform/network_link_kind.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace quorvel::platform {

NetworkLinkKind classifyNetworkLink(std::string_view uevent, bool hasWirelessDirectory) {
  std::size_t begin = 0;
  while (begin < uevent.size()) {
    auto end = uevent.find('\n', begin);
    if (end == std::string_view::npos) end = uevent.size();
    if (uevent.substr(begin, end - begin) == "DEVTYPE=wwan") return NetworkLinkKind::cellular;
    begin = end + 1;
  }
  return hasWirelessDirectory ? NetworkLinkKind::wireless : NetworkLinkKind::other;
}

NetworkLinkKind networkLinkKindOf(const std::string& name, const std::string& sysfsNet) {
  // A name from the kernel never holds '/', but keep a stray one from
  // leaving the directory.
  if (name.empty() || name.find('/') != std::string::npos || name == "." || name == "..") {
    return NetworkLinkKind::other;
  }
  const std::filesystem::path dir = std::filesystem::path(sysfsNet) / name;
  std::ifstream file(dir / "uevent");
  std::ostringstream text;
  text << file.rdbuf();
  std::error_code ignored;
  const bool wireless = std::filesystem::exists(dir / "wireless", ignored) ||
                        std::filesystem::exists(dir / "phy80211", ignored);
  return classifyNetworkLink(text.str(), wireless);
}

}  // namespace quorvel::platform
