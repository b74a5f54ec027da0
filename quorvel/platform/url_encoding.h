#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvel::platform {

// Percent-escaping of URL text. All functions take and give UTF-8; characters
// outside the kept set are escaped byte by byte as %XX with upper-case hex.
class UrlEncoding {
 public:
  // Sets of characters that may stay as they are in one part of a URL. Letters
  // and digits mean ASCII only: every non-ASCII byte is always escaped.
  enum class CharacterSet {
    urlQueryAllowed,        // alphanumerics and !$&'()*+,-./:;=?@_~
    urlFragmentAllowed,     // the same set as the query
    urlPathAllowed,         // alphanumerics and !$&'()*+,-./:=@_~
    urlPathSegmentAllowed,  // the path set without '/': one segment
    urlHostAllowed,         // alphanumerics and !$&'()*+,-.:;=[]_~
    urlUserAllowed,         // alphanumerics and !$&'()*+,-.;=_~
  };

  // Escapes only what may appear nowhere in a URL (space, " < > \ ^ ` { | },
  // control characters, DEL and every non-ASCII byte). Reserved characters
  // and '%' stay, so an existing escape such as %20 is left as it is and a
  // whole URL can be passed through.
  static std::string legacyEscape(std::string_view utf8);

  // Escapes every byte outside `allowed`, '%' included.
  static std::string encode(std::string_view utf8, CharacterSet allowed);

  // True when `text` can be used as a URL as it stands: non-empty, only
  // characters legal in a URL ('[' and ']' only in the authority), every '%'
  // followed by two hex digits, at most one '#', and a well-formed scheme when
  // the text starts like an absolute URL (a ':' before any '/', '?' or '#').
  static bool isValidUrl(std::string_view text);

  // Whether the byte may appear somewhere in a URL unescaped.
  static bool isLegalInUrl(unsigned char byte);

  // The first '/', '?' or '#' at or after `from` (where an authority ends),
  // or npos. A plain scan: find_first_of calls memchr once per character,
  // and every call reads a URL several times on its way.
  static std::size_t findDelimiter(std::string_view text, std::size_t from = 0) {
    for (std::size_t i = from; i < text.size(); ++i) {
      if (text[i] == '/' || text[i] == '?' || text[i] == '#') return i;
    }
    return std::string_view::npos;
  }
};

}  // namespace quorvel::platform
