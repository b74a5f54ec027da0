#pragma once

#include <memory>

#include "quorvel/cached_http_url_response_delegate.h"

namespace velmaro {

// Installed by the dispatcher on every request: a response that carries the
// service's private "X-QV-Cache-Control" header gets a transformer that turns
// it into a standard Cache-Control header before the HTTP cache stores it; any
// other response is cached, or not, by the ordinary rules. The decision
// depends only on that header, not on the path.
class DravikCachingDelegate : public quorvel::CachedHTTPURLResponseDelegate {
 public:
  static constexpr const char* kPrivateCacheControlHeader = "X-QV-Cache-Control";

  std::shared_ptr<quorvel::CachedHTTPURLResponseTransformer> transformer(
      const quorvel::HTTPURLResponse& response) const override;
};

}  // namespace velmaro
