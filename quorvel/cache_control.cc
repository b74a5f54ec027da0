#include "quorvel/cache_control.h"

#include <charconv>

#include "quorvel/http_header_fields.h"

namespace quorvel {
namespace {

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::optional<long> parseSeconds(std::string_view text) {
  text = trim(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
    text = text.substr(1, text.size() - 2);
  }
  long seconds = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (ec != std::errc() || end != text.data() + text.size() || seconds < 0) return std::nullopt;
  return seconds;
}

}  // namespace

CacheControl CacheControl::parse(std::string_view header) {
  CacheControl result;
  while (!header.empty()) {
    const auto comma = header.find(',');
    const std::string_view directive = trim(header.substr(0, comma));
    header = comma == std::string_view::npos ? std::string_view() : header.substr(comma + 1);
    const auto equals = directive.find('=');
    const std::string_view name = trim(directive.substr(0, equals));
    if (equalsIgnoringCase(name, "no-store")) {
      result.noStore = true;
    } else if (equalsIgnoringCase(name, "no-cache")) {
      result.noCache = true;
    } else if (equalsIgnoringCase(name, "private")) {
      result.isPrivate = true;
    } else if (equalsIgnoringCase(name, "must-revalidate")) {
      result.mustRevalidate = true;
    } else if (equalsIgnoringCase(name, "max-age") && equals != std::string_view::npos) {
      // A malformed max-age makes the answer stale at once, the safe reading.
      result.maxAge = parseSeconds(directive.substr(equals + 1)).value_or(0);
    }
  }
  return result;
}

}  // namespace quorvel
