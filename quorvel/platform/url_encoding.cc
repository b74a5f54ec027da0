#include "quorvel/platform/url_encoding.h"

#include <array>

namespace quorvel::platform {
namespace {

using Table = std::array<bool, 256>;

constexpr bool isAlnum(unsigned char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

constexpr bool isHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Alphanumerics plus the given punctuation.
constexpr Table makeTable(std::string_view punctuation) {
  Table table{};
  for (int c = 0; c < 256; ++c) table[c] = isAlnum(static_cast<unsigned char>(c));
  for (char c : punctuation) table[static_cast<unsigned char>(c)] = true;
  return table;
}

// Unreserved and reserved characters plus '%': everything that may appear in a
// URL somewhere.
constexpr Table kLegal = makeTable("-._~!#$&'()*+,/:;=?@[]%");
// Legal characters that need no further look: all but '%', '#', '[' and ']'.
constexpr Table kPlain = makeTable("-._~!$&'()*+,/:;=?@");
constexpr Table kQuery = makeTable("!$&'()*+,-./:;=?@_~");
constexpr Table kPath = makeTable("!$&'()*+,-./:=@_~");
constexpr Table kPathSegment = makeTable("!$&'()*+,-.:=@_~");
constexpr Table kHost = makeTable("!$&'()*+,-.:;=[]_~");
constexpr Table kUser = makeTable("!$&'()*+,-.;=_~");

const Table& tableFor(UrlEncoding::CharacterSet set) {
  switch (set) {
    case UrlEncoding::CharacterSet::urlQueryAllowed:
    case UrlEncoding::CharacterSet::urlFragmentAllowed:
      return kQuery;
    case UrlEncoding::CharacterSet::urlPathAllowed:
      return kPath;
    case UrlEncoding::CharacterSet::urlPathSegmentAllowed:
      return kPathSegment;
    case UrlEncoding::CharacterSet::urlHostAllowed:
      return kHost;
    case UrlEncoding::CharacterSet::urlUserAllowed:
      return kUser;
  }
  return kQuery;
}

std::string escapeOutside(std::string_view text, const Table& keep) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size());
  for (char ch : text) {
    const auto byte = static_cast<unsigned char>(ch);
    if (keep[byte]) {
      out += ch;
    } else {
      out += '%';
      out += kDigits[byte >> 4];
      out += kDigits[byte & 0xF];
    }
  }
  return out;
}

bool isSchemeChar(char c) {
  return isAlnum(static_cast<unsigned char>(c)) || c == '+' || c == '-' || c == '.';
}

// The text before the first ':' is a scheme when that ':' comes before any
// '/', '?' or '#'; then it must start with a letter and hold only scheme
// characters.
bool schemeIsWellFormed(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return true;
  const auto delimiter = UrlEncoding::findDelimiter(text);
  if (delimiter != std::string_view::npos && delimiter < colon) return true;  // relative
  if (colon == 0) return false;
  if (!((text[0] >= 'a' && text[0] <= 'z') || (text[0] >= 'A' && text[0] <= 'Z'))) return false;
  for (char c : text.substr(0, colon)) {
    if (!isSchemeChar(c)) return false;
  }
  return true;
}

// Where the authority ("//host:port") starts and ends, or an empty range.
std::pair<size_t, size_t> authorityRange(std::string_view text) {
  auto start = text.find("//");
  const auto firstDelimiter = UrlEncoding::findDelimiter(text);
  if (start == std::string_view::npos || start != firstDelimiter) return {0, 0};
  start += 2;
  auto end = UrlEncoding::findDelimiter(text, start);
  if (end == std::string_view::npos) end = text.size();
  return {start, end};
}

}  // namespace

bool UrlEncoding::isLegalInUrl(unsigned char byte) {
  return kLegal[byte];
}

std::string UrlEncoding::legacyEscape(std::string_view utf8) {
  return escapeOutside(utf8, kLegal);
}

std::string UrlEncoding::encode(std::string_view utf8, CharacterSet allowed) {
  return escapeOutside(utf8, tableFor(allowed));
}

bool UrlEncoding::isValidUrl(std::string_view text) {
  if (text.empty()) return false;
  const auto [authorityStart, authorityEnd] = authorityRange(text);
  int hashes = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    // Most characters of most URLs: one lookup each.
    if (kPlain[static_cast<unsigned char>(c)]) continue;
    if (!kLegal[static_cast<unsigned char>(c)]) return false;
    if (c == '%' && (i + 2 >= text.size() || !isHex(text[i + 1]) || !isHex(text[i + 2]))) {
      return false;
    }
    if (c == '#' && ++hashes > 1) return false;
    if ((c == '[' || c == ']') && (i < authorityStart || i >= authorityEnd)) return false;
  }
  return schemeIsWellFormed(text);
}

}  // namespace quorvel::platform
