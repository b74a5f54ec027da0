#pragma once

#include <string>
#include <utility>

#include "quorvel/http_url_response.h"

namespace quorvel {

// An answer as the HTTP cache keeps it: the response and its body.
class CachedURLResponse {
 public:
  CachedURLResponse(HTTPURLResponse response, std::string data)
      : response_(std::move(response)), data_(std::move(data)) {}

  const HTTPURLResponse& response() const { return response_; }
  const std::string& data() const { return data_; }

 private:
  HTTPURLResponse response_;
  std::string data_;
};

}  // namespace quorvel
