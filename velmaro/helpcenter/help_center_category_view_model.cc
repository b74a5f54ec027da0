#include "velmaro/helpcenter/help_center_category_view_model.h"

#include <algorithm>

#include "velmaro/util/keyed_array_decoding.h"

namespace velmaro {

quorvel::platform::Result<std::shared_ptr<HelpCenterCategoryViewModel>>
HelpCenterCategoryViewModel::decode(const KeyedDecodingContainer& container) {
  QUORVEL_ASSIGN_OR_RETURN(const auto id, container.decodeInt64("id"));
  QUORVEL_ASSIGN_OR_RETURN(auto name, container.decodeString("name"));
  QUORVEL_ASSIGN_OR_RETURN(
      auto sections,
      KeyedArrayDecoding::decodeObjects<HelpCenterSectionViewModel>(container, "sections"));
  QUORVEL_ASSIGN_OR_RETURN(const auto sectionCount, container.decodeInt64("section_count"));
  return std::shared_ptr<HelpCenterCategoryViewModel>(new HelpCenterCategoryViewModel(
      std::to_string(id), std::move(name), std::move(sections), sectionCount));
}

HelpCenterCategoryViewModel& HelpCenterCategoryViewModel::update(
    const HelpCenterSectionViewModel& section) {
  const auto it = std::find(sections_.begin(), sections_.end(), section);
  if (it != sections_.end()) *it = section;
  return *this;
}

}  // namespace velmaro
