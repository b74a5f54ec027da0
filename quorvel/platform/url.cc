#include "quorvel/platform/url.h"

#include <cctype>

#include "quorvel/platform/url_encoding.h"

namespace quorvel::platform {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string percentDecode(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      const int hi = hexValue(text[i + 1]);
      const int lo = hexValue(text[i + 2]);
      if (hi >= 0 && lo >= 0) {
        out += static_cast<char>(hi * 16 + lo);
        i += 2;
        continue;
      }
    }
    out += text[i];
  }
  return out;
}

}  // namespace

std::optional<Url> Url::make(std::string_view text) {
  if (!UrlEncoding::isValidUrl(text)) return std::nullopt;
  Parts url;
  url.text = std::string(text);
  std::string_view rest = text;

  if (const auto hash = rest.find('#'); hash != std::string_view::npos) {
    url.fragment = std::string(rest.substr(hash + 1));
    rest = rest.substr(0, hash);
  }
  if (const auto question = rest.find('?'); question != std::string_view::npos) {
    url.query = std::string(rest.substr(question + 1));
    rest = rest.substr(0, question);
  }
  // A scheme is letters, digits, '+', '-', '.' before the first ':', before any '/'.
  if (const auto colon = rest.find(':'); colon != std::string_view::npos &&
                                         colon < rest.find('/') && colon > 0 &&
                                         std::isalpha(static_cast<unsigned char>(rest[0])) != 0) {
    url.scheme = std::string(rest.substr(0, colon));
    rest = rest.substr(colon + 1);
  }
  if (rest.substr(0, 2) == "//") {
    rest = rest.substr(2);
    const auto slash = rest.find('/');
    std::string_view authority = rest.substr(0, slash);
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
      authority = authority.substr(at + 1);
    }
    // Drop the port, but not the colons of an IPv6 literal.
    const auto bracket = authority.rfind(']');
    const auto portColon = authority.rfind(':');
    if (portColon != std::string_view::npos &&
        (bracket == std::string_view::npos || portColon > bracket)) {
      authority = authority.substr(0, portColon);
    }
    url.host = std::string(authority);
  }
  url.path = std::string(rest);
  return Url(std::make_shared<const Parts>(std::move(url)));
}

std::vector<std::string> Url::pathComponents() const {
  std::vector<std::string> components;
  std::string_view path = parts_->path;
  if (path.empty()) return components;
  if (path.front() == '/') {
    components.emplace_back("/");
    path.remove_prefix(1);
  }
  while (!path.empty()) {
    const auto slash = path.find('/');
    const auto segment = path.substr(0, slash);
    if (!segment.empty()) components.push_back(percentDecode(segment));
    if (slash == std::string_view::npos) break;
    path.remove_prefix(slash + 1);
  }
  return components;
}

std::string Url::lastPathComponent() const {
  auto components = pathComponents();
  return components.empty() ? std::string() : components.back();
}

}  // namespace quorvel::platform
