#include "quorvel/http_cache_entry.h"

#include <algorithm>
#include <charconv>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "quorvel/cache_control.h"

namespace quorvel {
namespace {

long ageSeconds(const HttpHeaderFields& headers) {
  const auto it = headers.find("Age");
  if (it == headers.end()) return 0;
  long age = 0;
  const auto& text = it->second;
  std::from_chars(text.data(), text.data() + text.size(), age);
  return age > 0 ? age : 0;
}

}  // namespace

std::optional<std::string> HttpCacheEntry::etag() const {
  const auto it = headers->find("ETag");
  if (it == headers->end() || it->second.empty()) return std::nullopt;
  return it->second;
}

// How long the copy has been stale counts from when it stopped being fresh
// here, plus how stale it already was when it came (an Age past its max-age).
bool HttpCacheEntry::mayStandInWhenUnreachable(double now, double maxStaleAge) const {
  if (maxStaleAge <= 0) return false;
  const auto it = headers->find("Cache-Control");
  const CacheControl control =
      it == headers->end() ? CacheControl{} : CacheControl::parse(it->second);
  const long overdueOnArrival = ageSeconds(*headers) - control.maxAge.value_or(0);
  const double staleFor = now - freshUntil + static_cast<double>(std::max(0L, overdueOnArrival));
  if (staleFor > maxStaleAge) return false;
  return !control.mustRevalidate && !control.noStore;
}

long HttpCacheEntry::ageAt(double now) const {
  const double since = now > storedAt ? now - storedAt : 0;
  return ageSeconds(*headers) + static_cast<long>(since);
}

std::optional<CachedURLResponse> HttpCacheEntry::toCachedResponse() const {
  auto response = HTTPURLResponse::makeSharing(url, 200, httpVersion, headers);
  if (!response) return std::nullopt;
  return CachedURLResponse(std::move(*response), body);
}

std::optional<HttpCacheEntry> HttpCacheEntry::fromResponse(const CachedURLResponse& cached,
                                                           double now) {
  const auto& response = cached.response();
  if (response.statusCode() != 200) return std::nullopt;
  const CacheControl control = CacheControl::parse(response.value("Cache-Control").value_or(""));
  if (control.noStore) return std::nullopt;

  HttpCacheEntry entry;
  entry.url = response.url();
  entry.httpVersion = response.httpVersion();
  entry.headers = response.sharedHeaderFields();
  entry.body = cached.sharedData();
  entry.storedAt = now;
  // no-cache: may be stored, but every use asks the server first.
  const long lifetime =
      control.noCache ? 0 : control.maxAge.value_or(0) - ageSeconds(*entry.headers);
  entry.freshUntil = now + static_cast<double>(lifetime > 0 ? lifetime : 0);
  if (lifetime <= 0 && !entry.etag()) return std::nullopt;
  return entry;
}

std::string HttpCacheEntry::headersToJson(const HttpHeaderFields& headers) {
  boost::json::object object;
  for (const auto& [name, value] : headers) object[name] = value;
  return boost::json::serialize(object);
}

HttpHeaderFields HttpCacheEntry::headersFromJson(std::string_view text) {
  HttpHeaderFields headers;
  boost::system::error_code ec;
  const auto parsed = boost::json::parse(text, ec);
  if (ec || !parsed.is_object()) return headers;
  for (const auto& [name, value] : parsed.get_object()) {
    if (value.is_string()) headers.emplace(std::string(name), std::string(value.get_string()));
  }
  return headers;
}

}  // namespace quorvel
