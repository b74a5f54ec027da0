#include "velmaro/core/dravik_caching_transfromer.h"

#include "quorvel/core_logger.h"

namespace velmaro {
namespace {

void removeAll(std::string& text, const std::string& needle) {
  if (needle.empty()) return;
  for (auto at = text.find(needle); at != std::string::npos; at = text.find(needle, at)) {
    text.erase(at, needle.size());
  }
}

}  // namespace

quorvel::CachedURLResponse DravikCachingTransfromer::transform(
    const quorvel::CachedURLResponse& cachedResponse) const {
  const auto& response = cachedResponse.response();
  auto privateValue = response.value("X-QV-Cache-Control");
  if (!privateValue) return cachedResponse;

  std::string newValue = *privateValue;
  removeAll(newValue, oldHeaderValue);
  // All fields are kept, "X-QV-Cache-Control" included; Cache-Control is replaced.
  quorvel::HttpHeaderFields fields = response.allHeaderFields();
  fields.erase(cacheControlHeader);
  fields.emplace(cacheControlHeader, newValue);

  auto transformed = quorvel::HTTPURLResponse::make(response.url(), response.statusCode(),
                                                    httpVersion, std::move(fields));
  if (!transformed) {
    quorvel::CoreLogger::error(
        "Unable to use transfromed network response, falling back to original proposed "
        "response.");
    return cachedResponse;
  }
  return quorvel::CachedURLResponse(std::move(*transformed), cachedResponse.sharedData());
}

}  // namespace velmaro
