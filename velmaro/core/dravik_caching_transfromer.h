#pragma once

#include <string>

#include "quorvel/cached_http_url_response_transformer.h"

namespace velmaro {

// Turns the service's private cache instructions ("X-QV-Cache-Control") into
// a standard Cache-Control header without "must-revalidate, ", so that the
// HTTP cache may answer such responses within their lifetime without asking
// the server. The misspelt name is the established one.
class DravikCachingTransfromer : public quorvel::CachedHTTPURLResponseTransformer {
 public:
  DravikCachingTransfromer(std::string httpVersion, std::string cacheControlHeader,
                           std::string oldHeaderValue)
      : httpVersion(std::move(httpVersion)),
        cacheControlHeader(std::move(cacheControlHeader)),
        oldHeaderValue(std::move(oldHeaderValue)) {}

  quorvel::CachedURLResponse transform(
      const quorvel::CachedURLResponse& cachedResponse) const override;

  std::string httpVersion;
  std::string cacheControlHeader;
  std::string oldHeaderValue;
};

}  // namespace velmaro
