#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/http_header_fields.h"

namespace quorvel {

// The status line and header fields of an HTTP answer, with the URL it
// answered. Built only through make(), which refuses a URL that is not an
// absolute http(s) URL and a status code outside 100-599. Immutable: copies
// share the header fields, so that an answer handed on from the transport to
// the cache and to the caller copies them no more.
class HTTPURLResponse {
 public:
  static std::optional<HTTPURLResponse> make(std::string url, long statusCode,
                                             std::string httpVersion,
                                             HttpHeaderFields headerFields);
  // The same, with header fields another response or a cache entry shares.
  static std::optional<HTTPURLResponse> makeSharing(
      std::string url, long statusCode, std::string httpVersion,
      std::shared_ptr<const HttpHeaderFields> headerFields);

  // True for the URLs make() accepts.
  static bool acceptsURL(std::string_view url);

  const std::string& url() const { return url_; }
  long statusCode() const { return statusCode_; }
  // "1.1", "2", ... as received; the transformer writes "1.1".
  const std::string& httpVersion() const { return httpVersion_; }
  const HttpHeaderFields& allHeaderFields() const { return *headerFields_; }
  const std::shared_ptr<const HttpHeaderFields>& sharedHeaderFields() const {
    return headerFields_;
  }
  // This answer with other header fields and HTTP version: the URL and
  // status code were checked when this one was made, so it cannot fail.
  HTTPURLResponse withHeaderFields(std::string httpVersion, HttpHeaderFields headerFields) const;

  // The value of a header field, the name compared without regard to case.
  std::optional<std::string> value(std::string_view headerField) const;

 private:
  HTTPURLResponse(std::string url, long statusCode, std::string httpVersion,
                  std::shared_ptr<const HttpHeaderFields> headerFields);

  std::string url_;
  long statusCode_ = 0;
  std::string httpVersion_;
  std::shared_ptr<const HttpHeaderFields> headerFields_;  // never null
};

}  // namespace quorvel
