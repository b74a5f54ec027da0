// The HTTP cache's stored entries and Cache-Control headers from hostile
// bytes. The input is the header fields as the cache file holds them, a zero
// byte, then a Cache-Control value (no zero byte: no Cache-Control). Stored
// fields must read back the same once written again; an entry made from them
// must answer without fault; and an answer with that Cache-Control is stored
// only when the rules allow, never fresh before it was stored.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "quorvel/cache_control.h"
#include "quorvel/http_cache_entry.h"
#include "quorvel/http_url_response.h"

namespace {

using quorvel::CacheControl;
using quorvel::HttpCacheEntry;
using quorvel::HttpHeaderFields;

constexpr const char* kUrl = "https://example.test/api/v2/help_center/articles.json";
constexpr double kNow = 1.7e9;

void checkStoredEntry(const HttpHeaderFields& headers) {
  if (HttpCacheEntry::headersFromJson(HttpCacheEntry::headersToJson(headers)) != headers) {
    std::abort();
  }
  HttpCacheEntry entry;
  entry.url = kUrl;
  entry.httpVersion = "1.1";
  entry.headers = std::make_shared<const HttpHeaderFields>(headers);
  (void)entry.etag();
  (void)entry.toCachedResponse();
}

void checkStoring(HttpHeaderFields headers, std::string_view cacheControl) {
  const auto control = CacheControl::parse(cacheControl);
  headers["Cache-Control"] = std::string(cacheControl);
  auto response = quorvel::HTTPURLResponse::make(kUrl, 200, "1.1", std::move(headers));
  if (!response) return;
  const quorvel::CachedURLResponse cached(std::move(*response), std::string("{}"));
  const auto entry = HttpCacheEntry::fromResponse(cached, kNow);
  if (entry && (control.noStore || entry->freshUntil < entry->storedAt)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const auto split = input.find('\0');
  const auto headers = HttpCacheEntry::headersFromJson(input.substr(0, split));
  checkStoredEntry(headers);
  if (split != std::string_view::npos) checkStoring(headers, input.substr(split + 1));
  return 0;
}
