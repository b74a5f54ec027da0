#pragma once

#include <memory>
#include <string>
#include <utility>

#include "quorvel/http_url_response.h"

namespace quorvel {

// An answer as the HTTP cache keeps it: the response and its body. Immutable:
// copies share the body.
class CachedURLResponse {
 public:
  CachedURLResponse(HTTPURLResponse response, std::string data)
      : response_(std::move(response)),
        data_(std::make_shared<const std::string>(std::move(data))) {}
  CachedURLResponse(HTTPURLResponse response, std::shared_ptr<const std::string> data)
      : response_(std::move(response)),
        data_(data ? std::move(data) : std::make_shared<const std::string>()) {}

  const HTTPURLResponse& response() const { return response_; }
  const std::string& data() const { return *data_; }
  const std::shared_ptr<const std::string>& sharedData() const { return data_; }

 private:
  HTTPURLResponse response_;
  std::shared_ptr<const std::string> data_;  // never null
};

}  // namespace quorvel
