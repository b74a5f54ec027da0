#include "velmaro/core/dravik_caching_delegate.h"

#include "velmaro/core/dravik_caching_transfromer.h"

namespace velmaro {

std::shared_ptr<quorvel::CachedHTTPURLResponseTransformer> DravikCachingDelegate::transformer(
    const quorvel::HTTPURLResponse& response) const {
  // Header names are compared without regard to case: HTTP/2 sends them in
  // lower case, so an exact-case match would never fire there.
  if (!response.allHeaderFields().contains(kPrivateCacheControlHeader)) return nullptr;
  // Stateless: one transformer serves every answer.
  static const auto transformer =
      std::make_shared<DravikCachingTransfromer>("1.1", "Cache-Control", "must-revalidate, ");
  return transformer;
}

}  // namespace velmaro
