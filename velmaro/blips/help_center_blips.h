#pragma once

#include <cstdint>
#include <string>

namespace velmaro {

// The Help Center's usage events: article viewed, search made, article voted
// on. Each is handed to the core library's analytics sender, or dropped
// silently when the core library is not initialized. Safe from any thread.
class HelpCenterBlips {
 public:
  HelpCenterBlips() = delete;

  static void blipArticleViewed(const std::string& title, const std::string& url,
                                const std::string& navigatorLanguage, std::int64_t pageId,
                                const std::string& pageLocale);
  static void blipSearchQuery(const std::string& query);
  // The id arrives as text; one that is not a decimal 64-bit integer drops
  // the event.
  static void blipArticleVote(const std::string& articleId, long vote);
};

using QVKHelpCenterBlips = HelpCenterBlips;

}  // namespace velmaro
