#pragma once

#include <optional>

#include <boost/json/object.hpp>

#include "velmaro/helpcenter/qvk_help_center_last_search.h"

namespace velmaro {

// The search session of the process: the last search and whether the next
// article view is the first click on its results. Network completions touch
// it from any thread; the last writer wins.
class QVKHelpCenterSessionCache {
 public:
  // Stores the search and sets the click flag; nothing changes without one.
  static void cacheLastSearch(const std::optional<QVKHelpCenterLastSearch>& lastSearch);
  static std::optional<QVKHelpCenterLastSearch> getLastSearch();
  // Clears the click flag; the last search stays.
  static void unsetUniqueSearchResultClick();
  static bool uniqueSearchResultClick();
  // {"last_search": ..., "unique_search_result_click": flag}, or nothing
  // before any search.
  static std::optional<boost::json::object> recordArticleViewRequestJson();

  // Back to the start of a process: no search, flag cleared (tests).
  static void resetForTesting();
};

}  // namespace velmaro
