#include "quorvel/http_url_response.h"

#include <algorithm>
#include <cctype>

#include "quorvel/platform/url_encoding.h"

namespace quorvel {
namespace {

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && equalsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

// "http" or "https", "://", a host (a name, an address or a bracketed IPv6
// literal, after optional user info, before an optional numeric port), then
// anything without blanks or control characters. Checked by hand: a response
// is made for every answer and for every cached one, and a full URL parser
// costs more than the rest of the answer's handling together.
bool isAbsoluteHttpUrl(std::string_view url) {
  if (std::any_of(url.begin(), url.end(),
                  [](char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7f; })) {
    return false;
  }
  std::size_t start = 0;
  if (startsWithIgnoringCase(url, "http://")) {
    start = 7;
  } else if (startsWithIgnoringCase(url, "https://")) {
    start = 8;
  } else {
    return false;
  }
  std::string_view authority = url.substr(start);
  authority = authority.substr(0, platform::UrlEncoding::findDelimiter(authority));
  if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
    authority.remove_prefix(at + 1);
  }
  if (!authority.empty() && authority.front() == '[') {
    const auto close = authority.find(']');
    if (close == std::string_view::npos || close == 1) return false;
    authority.remove_prefix(close + 1);
    return authority.empty() || (authority.front() == ':' &&
                                 std::all_of(authority.begin() + 1, authority.end(), [](char c) {
                                   return std::isdigit(static_cast<unsigned char>(c)) != 0;
                                 }));
  }
  const auto colon = authority.find(':');
  const std::string_view host = authority.substr(0, colon);
  if (host.empty()) return false;
  if (colon == std::string_view::npos) return true;
  const std::string_view port = authority.substr(colon + 1);
  return std::all_of(port.begin(), port.end(),
                     [](char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; });
}

}  // namespace

bool HTTPURLResponse::acceptsURL(std::string_view url) {
  return isAbsoluteHttpUrl(url);
}

std::optional<HTTPURLResponse> HTTPURLResponse::make(std::string url, long statusCode,
                                                     std::string httpVersion,
                                                     HttpHeaderFields headerFields) {
  if (statusCode < 100 || statusCode > 599 || !isAbsoluteHttpUrl(url)) return std::nullopt;
  return HTTPURLResponse(std::move(url), statusCode, std::move(httpVersion),
                         std::make_shared<const HttpHeaderFields>(std::move(headerFields)));
}

std::optional<HTTPURLResponse> HTTPURLResponse::makeSharing(
    std::string url, long statusCode, std::string httpVersion,
    std::shared_ptr<const HttpHeaderFields> headerFields) {
  if (!headerFields) headerFields = std::make_shared<const HttpHeaderFields>();
  if (statusCode < 100 || statusCode > 599 || !isAbsoluteHttpUrl(url)) return std::nullopt;
  return HTTPURLResponse(std::move(url), statusCode, std::move(httpVersion),
                         std::move(headerFields));
}

HTTPURLResponse::HTTPURLResponse(std::string url, long statusCode, std::string httpVersion,
                                 std::shared_ptr<const HttpHeaderFields> headerFields)
    : url_(std::move(url)),
      statusCode_(statusCode),
      httpVersion_(std::move(httpVersion)),
      headerFields_(std::move(headerFields)) {}

HTTPURLResponse HTTPURLResponse::withHeaderFields(std::string httpVersion,
                                                  HttpHeaderFields headerFields) const {
  return HTTPURLResponse(url_, statusCode_, std::move(httpVersion),
                         std::make_shared<const HttpHeaderFields>(std::move(headerFields)));
}

std::optional<std::string> HTTPURLResponse::value(std::string_view headerField) const {
  const auto it = headerFields_->find(headerField);
  if (it == headerFields_->end()) return std::nullopt;
  return it->second;
}

}  // namespace quorvel
