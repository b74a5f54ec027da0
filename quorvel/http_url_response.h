#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quorvel/http_header_fields.h"

namespace quorvel {

// The status line and header fields of an HTTP answer, with the URL it
// answered. Built only through make(), which refuses a URL that is not an
// absolute http(s) URL and a status code outside 100-599.
class HTTPURLResponse {
 public:
  static std::optional<HTTPURLResponse> make(std::string url, long statusCode,
                                             std::string httpVersion,
                                             HttpHeaderFields headerFields);

  const std::string& url() const { return url_; }
  long statusCode() const { return statusCode_; }
  // "1.1", "2", ... as received; the transformer writes "1.1".
  const std::string& httpVersion() const { return httpVersion_; }
  const HttpHeaderFields& allHeaderFields() const { return headerFields_; }
  // The value of a header field, the name compared without regard to case.
  std::optional<std::string> value(std::string_view headerField) const;

 private:
  HTTPURLResponse(std::string url, long statusCode, std::string httpVersion,
                  HttpHeaderFields headerFields);

  std::string url_;
  long statusCode_ = 0;
  std::string httpVersion_;
  HttpHeaderFields headerFields_;
};

}  // namespace quorvel
