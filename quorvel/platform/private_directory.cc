#include "quorvel/platform/private_directory.h"

#include <sys/stat.h>

namespace quorvel::platform {

bool PrivateDirectory::create(const std::filesystem::path& path) {
  std::filesystem::path prefix;
  for (const auto& part : path) {
    prefix /= part;
    if (part.empty()) continue;  // after a trailing separator
    // mkdir's mode passes through the umask, which may take the owner's
    // own bits away: a folder made here is set to 0700 afterwards.
    if (::mkdir(prefix.c_str(), 0700) == 0) ::chmod(prefix.c_str(), 0700);
  }
  std::error_code ec;
  return std::filesystem::is_directory(path, ec);
}

}  // namespace quorvel::platform
