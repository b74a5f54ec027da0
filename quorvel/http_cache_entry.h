#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvel/cached_url_response.h"
#include "quorvel/http_header_fields.h"

namespace quorvel {

// One stored answer (always a 200 to a GET) with its freshness. Times are
// seconds since 1970. The header fields and the body are shared with the
// responses made from the entry, never changed in place.
struct HttpCacheEntry {
  std::string url;
  std::string httpVersion;
  std::shared_ptr<const HttpHeaderFields> headers = std::make_shared<const HttpHeaderFields>();
  std::shared_ptr<const std::string> body = std::make_shared<const std::string>();
  double storedAt = 0;
  double freshUntil = 0;

  bool isFresh(double now) const { return now < freshUntil; }
  // Whether the entry may answer for the service when the service cannot be
  // reached: not past its freshness by more than `maxStaleAge` seconds, and
  // stored without must-revalidate (or no-store, never stored anyway).
  bool mayStandInWhenUnreachable(double now, double maxStaleAge) const;
  // The entry's age at `now`: the Age it arrived with plus the time since.
  long ageAt(double now) const;
  std::optional<std::string> etag() const;
  std::optional<CachedURLResponse> toCachedResponse() const;

  // The entry for a 200 answer under its Cache-Control rules, or nothing
  // when the rules forbid storing it or it could never be used (no lifetime
  // and no validator).
  static std::optional<HttpCacheEntry> fromResponse(const CachedURLResponse& cached, double now);

  // The header fields as the cache file keeps them: one JSON object of
  // strings. Reading takes what the file holds, whoever wrote it: text that
  // is not such an object gives no fields, and members that are not strings
  // are left out.
  static std::string headersToJson(const HttpHeaderFields& headers);
  static HttpHeaderFields headersFromJson(std::string_view text);
};

}  // namespace quorvel
