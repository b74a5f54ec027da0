#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/http_header_fields.h"
#include "quorvel/http_method.h"

namespace quorvel {

// One HTTP exchange as the transport runs it: everything decided, headers in
// the order they go out.
struct TransportRequest {
  std::string url;
  HttpMethod method = HttpMethod::get;
  std::vector<std::pair<std::string, std::string>> headers;
  std::optional<std::string> body;
};

// What came back, before any cache or authentication handling.
struct TransportResponse {
  std::string url;
  long statusCode = 0;
  std::string httpVersion;
  HttpHeaderFields headers;
  std::string body;
};

struct TransportLimits {
  std::chrono::milliseconds connectTimeout{10'000};
  std::chrono::milliseconds requestTimeout{60'000};
  std::size_t maxResponseBytes = 32u * 1024u * 1024u;
};

}  // namespace quorvel
