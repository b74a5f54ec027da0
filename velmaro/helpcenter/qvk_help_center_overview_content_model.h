#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmaro {

// What the Help Center overview shows: the whole Help Center, or only some
// sections or categories, optionally filtered by article labels.
struct QVKHelpCenterOverviewContentModel {
  static constexpr std::uint64_t kGroupTypeDefault = 0;   // the whole Help Center
  static constexpr std::uint64_t kGroupTypeSection = 1;   // the sections in groupIds
  static constexpr std::uint64_t kGroupTypeCategory = 2;  // the categories in groupIds

  std::uint64_t groupType = kGroupTypeDefault;
  std::optional<std::vector<std::int64_t>> groupIds;
  std::optional<std::vector<std::string>> labels;
  std::optional<std::int64_t> initialNumberOfArticles;
  std::uint64_t navBarConversationsUIType = 0;
  bool hideContactSupport = false;

  // The whole Help Center with five articles per section at first.
  static QVKHelpCenterOverviewContentModel defaultContent();

  // The query string of the article-tree request ("?per_page=1000" by default).
  std::string formQueryString() const;
};

}  // namespace velmaro
