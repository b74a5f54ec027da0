#include "velmaro/blips/help_center_blips.h"

#include <charconv>
#include <optional>
#include <string_view>

#include "quorvel/quorvel.h"
#include "velmaro/blips/blip_vocabulary.h"
#include "velmaro/blips/help_center_article_vote_blip.h"
#include "velmaro/blips/help_center_search_blip.h"

namespace velmaro {
namespace {

// A signed 64-bit decimal, the whole text: "+4021" and "-7" are numbers,
// " 4021", "4021x" and "" are not.
std::optional<std::int64_t> signedDecimal(std::string_view text) {
  // from_chars takes a minus sign but not a plus.
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  std::int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [ptr, ec] = std::from_chars(text.data(), end, value);
  if (text.empty() || ec != std::errc() || ptr != end) return std::nullopt;
  return value;
}

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
  const auto id = signedDecimal(articleId);
  if (!id) return;
  quorvel::UserAction event(BlipVocabulary::version(), BlipVocabulary::kArticleVoteAction,
                            std::nullopt, BlipVocabulary::kChannel, BlipVocabulary::kCategory,
                            boost::json::value(HelpCenterArticleVoteBlip{vote, *id}.encode()));
  if (auto blips = sender()) blips->send(event, quorvel::BlipsGroup::behavioural);
}

}  // namespace velmaro
