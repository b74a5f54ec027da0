#include "velmaro/blips/help_center_blips.h"

#include <charconv>

#include "quorvel/quorvel.h"
#include "velmaro/blips/blip_vocabulary.h"
#include "velmaro/blips/help_center_article_vote_blip.h"
#include "velmaro/blips/help_center_search_blip.h"

namespace velmaro {
namespace {

std::shared_ptr<quorvel::BlipsProvider> sender() {
  auto core = quorvel::Quorvel::instance();
  return core ? core->providerModule().blip : nullptr;
}

}  // namespace

void HelpCenterBlips::blipArticleViewed(const std::string& title, const std::string& url,
                                        const std::string& navigatorLanguage, std::int64_t pageId,
                                        const std::string& pageLocale) {
  quorvel::PageView event(BlipVocabulary::version(), BlipVocabulary::kChannel, url, title,
                          navigatorLanguage, pageId, pageLocale);
  if (auto blips = sender()) blips->send(event, quorvel::BlipsGroup::pathfinder);
}

void HelpCenterBlips::blipSearchQuery(const std::string& query) {
  quorvel::UserAction event(BlipVocabulary::version(), BlipVocabulary::kSearchAction,
                            std::string(BlipVocabulary::kSearchLabel), BlipVocabulary::kChannel,
                            BlipVocabulary::kCategory,
                            boost::json::value(HelpCenterSearchBlip{query}.encode()));
  if (auto blips = sender()) blips->send(event, quorvel::BlipsGroup::pathfinder);
}

void HelpCenterBlips::blipArticleVote(const std::string& articleId, long vote) {
  std::int64_t id = 0;
  const char* end = articleId.data() + articleId.size();
  const auto [ptr, ec] = std::from_chars(articleId.data(), end, id);
  if (articleId.empty() || ec != std::errc() || ptr != end) return;
  quorvel::UserAction event(BlipVocabulary::version(), BlipVocabulary::kArticleVoteAction,
                            std::nullopt, BlipVocabulary::kChannel, BlipVocabulary::kCategory,
                            boost::json::value(HelpCenterArticleVoteBlip{vote, id}.encode()));
  if (auto blips = sender()) blips->send(event, quorvel::BlipsGroup::behavioural);
}

}  // namespace velmaro
