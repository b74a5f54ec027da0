#pragma once

#include <map>
#include <string>

#include "quorvel/client_headers.h"

namespace velmaro {

// The client headers the dispatcher hands the core for every request: the
// client "Support" at the library's version, and the header fields the
// provider set on its request.
class SupportHeaders : public quorvel::ClientHeaders {
 public:
  static constexpr const char* kClient = "Support";

  explicit SupportHeaders(std::map<std::string, std::string> additionalHeaders = {})
      : additionalHeaders_(std::move(additionalHeaders)) {}

  std::string client() const override { return kClient; }
  // "SDKVersion" of the library's resource bundle, "1.0.0-default" without it.
  std::string version() const override;
  std::map<std::string, std::string> additionalHeaders() const override {
    return additionalHeaders_;
  }

 private:
  std::map<std::string, std::string> additionalHeaders_;
};

}  // namespace velmaro
