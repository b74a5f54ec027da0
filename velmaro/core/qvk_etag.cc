#include "velmaro/core/qvk_etag.h"

#include <map>
#include <mutex>

namespace velmaro {
namespace {

struct Table {
  std::mutex mutex;
  std::map<std::string, std::string, std::less<>> etags;
};

Table& table() {
  static Table t;
  return t;
}

std::optional<std::string> lookup(const std::string& url) {
  auto& t = table();
  std::lock_guard lock(t.mutex);
  auto it = t.etags.find(url);
  if (it == t.etags.end()) return std::nullopt;
  return it->second;
}

}  // namespace

void QVKETag::addEtagToRequest(quorvel::platform::URLRequest& request) {
  if (!request.url) return;
  if (auto etag = eTagForURL(*request.url)) request.setValue(*etag, "If-None-Match");
}

std::optional<std::string> QVKETag::eTagForURL(const quorvel::platform::Url& url) {
  return lookup(url.absoluteString());
}

void QVKETag::updateEtagsWithResponse(const QVKDispatcherResponse& response) {
  if (!response.response) return;
  const std::string& url = response.response->url();
  auto received = response.response->value("ETag");
  auto& t = table();
  std::lock_guard lock(t.mutex);
  auto stored = t.etags.find(url);
  // Only an existing entry is replaced; a first insertion never happens.
  if (stored != t.etags.end() && received && *received != stored->second) {
    stored->second = *received;
  }
}

bool QVKETag::unmodified(const QVKDispatcherResponse& response) {
  updateEtagsWithResponse(response);
  return response.response && response.response->statusCode() == 304;
}

void QVKETag::seedForTesting(const std::string& absoluteUrl, const std::string& etag) {
  auto& t = table();
  std::lock_guard lock(t.mutex);
  t.etags[absoluteUrl] = etag;
}

void QVKETag::resetForTesting() {
  auto& t = table();
  std::lock_guard lock(t.mutex);
  t.etags.clear();
}

}  // namespace velmaro
