#pragma once

#include <memory>

#include "quorvel/cached_http_url_response_transformer.h"
#include "quorvel/http_url_response.h"

namespace quorvel {

// A request's say in what the HTTP cache stores: given the response about to
// be cached, it may hand back a transformer to apply first. Called on the
// transport's thread.
class CachedHTTPURLResponseDelegate {
 public:
  CachedHTTPURLResponseDelegate() = default;
  CachedHTTPURLResponseDelegate(const CachedHTTPURLResponseDelegate&) = default;
  CachedHTTPURLResponseDelegate& operator=(const CachedHTTPURLResponseDelegate&) = default;
  virtual ~CachedHTTPURLResponseDelegate() = default;

  virtual std::shared_ptr<CachedHTTPURLResponseTransformer> transformer(
      const HTTPURLResponse& response) const = 0;
};

}  // namespace quorvel
