#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"

namespace velmaro {

// A full-text search of the Help Center and its query string.
struct QVKHelpCenterSearch {
  std::optional<std::string> query;
  std::optional<std::vector<std::string>> labelNames = std::vector<std::string>{};
  std::optional<std::string> locale;  // overrides the locale of the request
  std::optional<std::vector<std::string>> sideLoads = std::vector<std::string>{};
  std::optional<std::vector<std::int64_t>> categoryIds;
  std::optional<std::vector<std::int64_t>> sectionIds;
  std::optional<std::int64_t> page;
  std::optional<std::int64_t> resultsPerPage;

  // The query string with its leading "?", escaped for a URL. An empty
  // category or section list still writes its parameter, with no value.
  std::string queryStringWithLocale(std::string_view requestLocale) const;

  // Restricts the search to what an overview shows (labels, sections or categories).
  void addSearchContentScope(const QVKHelpCenterOverviewContentModel& content);
};

}  // namespace velmaro
