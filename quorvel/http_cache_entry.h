#pragma once

#include <optional>
#include <string>

#include "quorvel/cached_url_response.h"
#include "quorvel/http_header_fields.h"

namespace quorvel {

// One stored answer (always a 200 to a GET) with its freshness. Times are
// seconds since 1970.
struct HttpCacheEntry {
  std::string url;
  std::string httpVersion;
  HttpHeaderFields headers;
  std::string body;
  double storedAt = 0;
  double freshUntil = 0;

  bool isFresh(double now) const { return now < freshUntil; }
  std::optional<std::string> etag() const;
  std::optional<CachedURLResponse> toCachedResponse() const;

  // The entry for a 200 answer under its Cache-Control rules, or nothing
  // when the rules forbid storing it or it could never be used (no lifetime
  // and no validator).
  static std::optional<HttpCacheEntry> fromResponse(const CachedURLResponse& cached, double now);
};

}  // namespace quorvel
