// String tables from hostile bytes. A table that reads must read back the
// same when written out again as quoted entries with only '"' and '\'
// escaped: every other character inside quotes stands for itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "quorvel/platform/strings_file.h"

namespace {

using quorvel::platform::StringsFile;

void appendQuoted(std::string& out, const std::string& text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  out += '"';
}

std::string written(const std::map<std::string, std::string>& table) {
  std::string out;
  for (const auto& [key, value] : table) {
    appendQuoted(out, key);
    out += " = ";
    appendQuoted(out, value);
    out += ";\n";
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto table =
      StringsFile::parse(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!table.ok()) {
    (void)table.error().localizedDescription();
    return 0;
  }
  const auto reread = StringsFile::parse(written(*table));
  if (!reread.ok() || *reread != *table) std::abort();
  return 0;
}
