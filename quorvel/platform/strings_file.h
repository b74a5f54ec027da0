#pragma once

#include <map>
#include <string>
#include <string_view>

#include "quorvel/platform/result.h"

namespace quorvel::platform {

// Reads string tables ("Localizable.strings"): entries `"key" = "value";`,
// `/* */` and `//` comments, escapes \" \\ \n \t \r \uXXXX \UXXXX (UTF-16
// units; surrogate pairs combine), unquoted keys and values made of letters,
// digits and _ . - $ : /, and a lone `"key";` meaning the key maps to itself.
// Files are UTF-8 (with or without BOM) or UTF-16 with a BOM. A later entry
// for the same key replaces an earlier one.
class StringsFile {
 public:
  static constexpr const char* kErrorDomain = "quorvel.strings";
  enum Code : long { kMalformed = 1, kBadEncoding = 2 };

  // The table, or an error whose description names the line at fault.
  static Result<std::map<std::string, std::string>> parse(std::string_view bytes);
};

}  // namespace quorvel::platform
