#pragma once

#include <map>
#include <string>

#include "quorvel/client_headers.h"

namespace quorvel {

// ClientHeaders from fixed values.
class BasicClientHeaders final : public ClientHeaders {
 public:
  BasicClientHeaders(std::string client, std::string version,
                     std::map<std::string, std::string> additionalHeaders = {})
      : client_(std::move(client)),
        version_(std::move(version)),
        additionalHeaders_(std::move(additionalHeaders)) {}

  std::string client() const override { return client_; }
  std::string version() const override { return version_; }
  std::map<std::string, std::string> additionalHeaders() const override {
    return additionalHeaders_;
  }

 private:
  std::string client_;
  std::string version_;
  std::map<std::string, std::string> additionalHeaders_;
};

}  // namespace quorvel
