#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/platform/url.h"

namespace quorvel::platform {

// What a provider asks to be sent: a URL (absent when the text it was made
// from is not a valid URL), a method, header fields and a body. Header names
// are kept as set; lookups ignore case.
class URLRequest {
 public:
  URLRequest() = default;
  explicit URLRequest(std::optional<Url> url, std::string httpMethod = "GET")
      : url(std::move(url)), httpMethod(std::move(httpMethod)) {}

  std::optional<Url> url;
  std::optional<std::string> httpMethod;
  std::optional<std::string> httpBody;

  const std::map<std::string, std::string>& allHTTPHeaderFields() const { return headers_; }
  // Replaces the value of the field, whatever the case of its earlier spelling.
  void setValue(std::string value, std::string_view headerField);
  // Replaces all header fields.
  void setAllHTTPHeaderFields(std::map<std::string, std::string> fields);
  std::optional<std::string> value(std::string_view headerField) const;

 private:
  std::map<std::string, std::string> headers_;
};

}  // namespace quorvel::platform
