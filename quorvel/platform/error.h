#pragma once

#include <string>

#include <boost/json/object.hpp>

namespace quorvel::platform {

// An error value handed to callbacks: a domain string, a code within that
// domain and a dictionary of details. Errors are never thrown across the
// public boundary.
struct Error {
  // The user-info key whose string value is the human-readable description.
  static constexpr const char* kLocalizedDescriptionKey = "localizedDescription";

  std::string domain;
  long code = 0;
  boost::json::object userInfo;

  Error() = default;
  Error(std::string domain, long code, boost::json::object userInfo = {});
  // Convenience: an error whose user info holds only a description.
  static Error withDescription(std::string domain, long code, std::string description);

  // The description from user info, or a generic sentence naming domain and code.
  std::string localizedDescription() const;
  // "Error Domain=<domain> Code=<code> "<description>" UserInfo={...}", for logs.
  std::string debugDescription() const;

  // Errors are the same error when domain and code agree.
  bool operator==(const Error& other) const { return domain == other.domain && code == other.code; }
};

}  // namespace quorvel::platform
