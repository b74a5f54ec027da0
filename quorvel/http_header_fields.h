#pragma once

#include <map>
#include <string>
#include <string_view>

namespace quorvel {

// Orders header names without regard to ASCII case, so that a map keyed with
// it finds "etag" under "ETag".
struct CaseInsensitiveLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

// Header fields of a response: one value per name, names compared without
// regard to case, the first spelling kept.
using HttpHeaderFields = std::map<std::string, std::string, CaseInsensitiveLess>;

bool equalsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace quorvel
