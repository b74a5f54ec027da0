#pragma once

#include <optional>
#include <string_view>

namespace quorvel {

// The directives of a Cache-Control header that a single-user client cache
// acts on. Unknown directives are ignored.
struct CacheControl {
  bool noStore = false;
  bool noCache = false;
  bool isPrivate = false;
  bool mustRevalidate = false;
  std::optional<long> maxAge;

  static CacheControl parse(std::string_view header);
};

}  // namespace quorvel
