#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include <boost/json/value.hpp>

namespace quorvel::platform {

// Property lists (XML or binary, as libplist reads them) as JSON values:
// dates become seconds since 1970 (double), data becomes base64 text, UIDs
// become integers. Stateless; safe from any thread.
class PropertyList {
 public:
  // libplist parses and frees containers recursively, so a deeply nested
  // document overflows the stack. A document that is not binary with more `<array` and
  // `<dict` tags than this in all is refused before libplist sees it: a
  // count cannot be fooled by markup that hides a closing tag, and real
  // documents (Info.plist, provisioning profiles) have a few dozen.
  static constexpr std::size_t kMaxXmlContainers = 4096;

  // The document's root value, or nothing for bytes that are not a property
  // list (or XML with too many containers). XML ends at its first NUL byte.
  static std::optional<boost::json::value> parse(std::string_view bytes);
};

}  // namespace quorvel::platform
