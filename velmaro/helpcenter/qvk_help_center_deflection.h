#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmaro {

// A deflection search: articles suggested while a user writes a request.
struct QVKHelpCenterDeflection {
  std::optional<std::string> query;
  std::optional<std::vector<std::string>> labelNames = std::vector<std::string>{};
  std::optional<std::string> locale;  // overrides the locale of the request
  std::optional<std::vector<std::string>> sideLoads = std::vector<std::string>{};
  std::optional<std::int64_t> categoryId;
  std::optional<std::int64_t> sectionId;
  std::optional<std::int64_t> page;
  std::optional<std::int64_t> resultsPerPage;

  // The query string with its leading "?", percent-encoded for a URL query.
  std::string queryStringWithLocale(std::string_view requestLocale) const;
};

}  // namespace velmaro
