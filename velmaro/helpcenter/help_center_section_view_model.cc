#include "velmaro/helpcenter/help_center_section_view_model.h"

#include "velmaro/util/keyed_array_decoding.h"
#include "velmaro/util/qvk_localization.h"
#include "velmaro/util/string_format.h"

namespace velmaro {

quorvel::platform::Result<HelpCenterSectionViewModel> HelpCenterSectionViewModel::decode(
    const KeyedDecodingContainer& container) {
  QUORVEL_ASSIGN_OR_RETURN(const auto id, container.decodeInt64("id"));
  QUORVEL_ASSIGN_OR_RETURN(const auto categoryId, container.decodeInt64("category_id"));
  QUORVEL_ASSIGN_OR_RETURN(auto name, container.decodeString("name"));
  QUORVEL_ASSIGN_OR_RETURN(const auto articleCount, container.decodeInt64("article_count"));
  QUORVEL_ASSIGN_OR_RETURN(
      auto articles,
      KeyedArrayDecoding::decodeObjects<HelpCenterArticleViewModel>(container, "articles"));
  return HelpCenterSectionViewModel(std::to_string(id), std::to_string(categoryId), std::move(name),
                                    articleCount, std::move(articles));
}

std::string HelpCenterSectionViewModel::detailTitle() const {
  return StringFormat::format(QVKLocalization::localizedStringWithKey(kSeeAllTitleKey),
                              article_count_);
}

HelpCenterSectionViewModel HelpCenterSectionViewModel::sectionByReplacing(
    std::vector<HelpCenterArticleViewModel> articles) const {
  return HelpCenterSectionViewModel(id_, category_id_, name_, article_count_, std::move(articles));
}

}  // namespace velmaro
