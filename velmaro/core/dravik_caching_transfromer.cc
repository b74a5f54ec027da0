#include "velmaro/core/dravik_caching_transfromer.h"

#include <string>

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
  const auto& received = response.allHeaderFields();
  const auto privateField = received.find("X-QV-Cache-Control");
  if (privateField == received.end()) return cachedResponse;

  std::string newValue = privateField->second;
  removeAll(newValue, oldHeaderValue);
  // All fields are kept, "X-QV-Cache-Control" included; Cache-Control is replaced.
  quorvel::HttpHeaderFields fields = received;
  fields.erase(cacheControlHeader);
  fields.emplace(cacheControlHeader, std::move(newValue));
  // Made from a response that was already checked, the new one cannot be
  // refused (the URL and status code stay): no fallback to the original.
  return quorvel::CachedURLResponse(response.withHeaderFields(httpVersion, std::move(fields)),
                                    cachedResponse.sharedData());
}

}  // namespace velmaro
