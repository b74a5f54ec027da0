#include "tools/qvk/int64_argument.h"

#include <cerrno>
#include <cstdlib>
#include <string>

namespace qvk {

CLI::Validator Int64Argument::inRange() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        // Read as CLI11 reads it (base 0), to see whether it clamped.
        errno = 0;
        char* end = nullptr;
        std::strtoll(text.c_str(), &end, 0);
        if (errno == ERANGE) return "the number " + text + " is out of the 64-bit range";
        return {};
      },
      "", "INT64");
}

}  // namespace qvk
