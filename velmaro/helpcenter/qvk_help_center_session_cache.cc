#include "velmaro/helpcenter/qvk_help_center_session_cache.h"

#include <mutex>

namespace velmaro {
namespace {

struct Session {
  std::mutex mutex;
  std::optional<QVKHelpCenterLastSearch> lastSearch;
  bool uniqueSearchResultClick = false;
};

Session& session() {
  static Session instance;
  return instance;
}

}  // namespace

void QVKHelpCenterSessionCache::cacheLastSearch(
    const std::optional<QVKHelpCenterLastSearch>& lastSearch) {
  if (!lastSearch) return;
  auto& s = session();
  std::lock_guard lock(s.mutex);
  s.lastSearch = lastSearch;
  s.uniqueSearchResultClick = true;
}

std::optional<QVKHelpCenterLastSearch> QVKHelpCenterSessionCache::getLastSearch() {
  auto& s = session();
  std::lock_guard lock(s.mutex);
  return s.lastSearch;
}

void QVKHelpCenterSessionCache::unsetUniqueSearchResultClick() {
  auto& s = session();
  std::lock_guard lock(s.mutex);
  s.uniqueSearchResultClick = false;
}

bool QVKHelpCenterSessionCache::uniqueSearchResultClick() {
  auto& s = session();
  std::lock_guard lock(s.mutex);
  return s.uniqueSearchResultClick;
}

std::optional<boost::json::object> QVKHelpCenterSessionCache::recordArticleViewRequestJson() {
  auto& s = session();
  std::lock_guard lock(s.mutex);
  if (!s.lastSearch) return std::nullopt;
  auto lastSearch = s.lastSearch->toJson();
  if (lastSearch.empty()) return std::nullopt;
  boost::json::object json;
  json["last_search"] = std::move(lastSearch);
  json["unique_search_result_click"] = s.uniqueSearchResultClick;
  return json;
}

void QVKHelpCenterSessionCache::resetForTesting() {
  auto& s = session();
  std::lock_guard lock(s.mutex);
  s.lastSearch.reset();
  s.uniqueSearchResultClick = false;
}

}  // namespace velmaro
