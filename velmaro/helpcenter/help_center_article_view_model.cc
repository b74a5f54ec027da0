#include "velmaro/helpcenter/help_center_article_view_model.h"

#include <cstdlib>

#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

quorvel::platform::Result<HelpCenterArticleViewModel> HelpCenterArticleViewModel::decode(
    const KeyedDecodingContainer& container) {
  QUORVEL_ASSIGN_OR_RETURN(const auto id, container.decodeInt64("id"));
  QUORVEL_ASSIGN_OR_RETURN(const auto sectionId, container.decodeInt64("section_id"));
  QUORVEL_ASSIGN_OR_RETURN(auto name, container.decodeString("name"));
  return HelpCenterArticleViewModel(std::to_string(id), std::to_string(sectionId), std::move(name));
}

std::vector<HelpCenterArticleViewModel> HelpCenterArticleViewModel::convert(
    const std::vector<QVKHelpCenterArticle>& articles) {
  std::vector<HelpCenterArticleViewModel> models;
  models.reserve(articles.size());
  for (const auto& article : articles) {
    if (!article.identifier || !article.section_id || !article.title) {
      QVKClassicLogger::error(
          "HelpCenterArticleViewModel::convert: an article without identifier, section id or "
          "title");
      std::abort();
    }
    models.push_back(HelpCenterArticleViewModel(
        std::to_string(*article.identifier), std::to_string(*article.section_id), *article.title));
  }
  return models;
}

}  // namespace velmaro
