#pragma once

#include <filesystem>

namespace quorvel::platform {

// Folders for the user's own files (tokens, caches, settings). Every folder
// made here, the missing parents included, is readable by its owner only
// whatever the process's umask; folders that already exist are left as
// they are, since they may be shared ones such as /tmp.
class PrivateDirectory {
 public:
  // Makes `path` and its missing parents with mode 0700. True when `path`
  // is a folder afterwards (made now, by another process, or before).
  static bool create(const std::filesystem::path& path);
};

}  // namespace quorvel::platform
