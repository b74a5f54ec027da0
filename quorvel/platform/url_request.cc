#include "quorvel/platform/url_request.h"

#include <algorithm>
#include <cctype>

namespace quorvel::platform {
namespace {

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

void URLRequest::setValue(std::string value, std::string_view headerField) {
  for (auto it = headers_.begin(); it != headers_.end(); ++it) {
    if (sameName(it->first, headerField)) {
      headers_.erase(it);
      break;
    }
  }
  headers_.emplace(std::string(headerField), std::move(value));
}

void URLRequest::setAllHTTPHeaderFields(std::map<std::string, std::string> fields) {
  headers_ = std::move(fields);
}

std::optional<std::string> URLRequest::value(std::string_view headerField) const {
  for (const auto& [name, value] : headers_) {
    if (sameName(name, headerField)) return value;
  }
  return std::nullopt;
}

}  // namespace quorvel::platform
