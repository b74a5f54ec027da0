#pragma once

#include "quorvel/cached_url_response.h"

namespace quorvel {

// Rewrites an answer just before the HTTP cache stores it. What it returns is
// what is stored, and what later cache hits answer with.
class CachedHTTPURLResponseTransformer {
 public:
  CachedHTTPURLResponseTransformer() = default;
  CachedHTTPURLResponseTransformer(const CachedHTTPURLResponseTransformer&) = default;
  CachedHTTPURLResponseTransformer& operator=(const CachedHTTPURLResponseTransformer&) = default;
  virtual ~CachedHTTPURLResponseTransformer() = default;

  virtual CachedURLResponse transform(const CachedURLResponse& cachedResponse) const = 0;
};

}  // namespace quorvel
