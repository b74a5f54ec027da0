#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/http_header_fields.h"
#include "quorvel/http_method.h"

namespace quorvel {

class TransferHandle;

// What a transfer does beyond an in-memory exchange; ordinary calls have none.
struct TransferOptions {
  // The body, streamed from this file (its whole content) instead of memory.
  std::optional<std::string> uploadFile;
  // A successful (2xx) body is written to a temporary file beside this path,
  // renamed to it once complete, and removed on any failure or cancel.
  std::optional<std::string> downloadFile;
  // The largest body accepted, instead of the transport's limit.
  std::optional<std::size_t> maxResponseBytes;
  // Progress and cancellation; may be null.
  std::shared_ptr<TransferHandle> handle;
};

// One HTTP exchange as the transport runs it: everything decided, headers in
// the order they go out.
struct TransportRequest {
  std::string url;
  HttpMethod method = HttpMethod::get;
  std::vector<std::pair<std::string, std::string>> headers;
  std::optional<std::string> body;
  // Null for an ordinary call. Such a transfer bypasses the HTTP cache.
  std::shared_ptr<const TransferOptions> transfer;
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
