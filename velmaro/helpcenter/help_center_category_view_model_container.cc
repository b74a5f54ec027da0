#include "velmaro/helpcenter/help_center_category_view_model_container.h"

#include "velmaro/util/keyed_array_decoding.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

namespace {

// The category decoder hands out shared pointers; this adapts it to the
// array decoding, which expects a plain T::decode.
struct SharedCategory {
  std::shared_ptr<HelpCenterCategoryViewModel> category;
  static quorvel::platform::Result<SharedCategory> decode(const KeyedDecodingContainer& c) {
    QUORVEL_ASSIGN_OR_RETURN(auto category, HelpCenterCategoryViewModel::decode(c));
    return SharedCategory{std::move(category)};
  }
};

}  // namespace

quorvel::platform::Result<HelpCenterCategoryViewModelContainer>
HelpCenterCategoryViewModelContainer::decode(const boost::json::value& document) {
  QUORVEL_ASSIGN_OR_RETURN(const auto root, KeyedDecodingContainer::root(document));
  QUORVEL_ASSIGN_OR_RETURN(const auto categoryCount, root.decodeInt64("category_count"));
  QUORVEL_ASSIGN_OR_RETURN(auto shared,
                           KeyedArrayDecoding::decodeObjects<SharedCategory>(root, "categories"));
  Categories categories;
  categories.reserve(shared.size());
  for (auto& entry : shared) categories.push_back(std::move(entry.category));
  return HelpCenterCategoryViewModelContainer(categoryCount, std::move(categories));
}

quorvel::platform::Result<HelpCenterCategoryViewModelContainer::Categories>
HelpCenterCategoryViewModelContainer::parse(std::string_view data) {
  QUORVEL_ASSIGN_OR_RETURN(const auto document, KeyedDecodingContainer::parse(data));
  QUORVEL_ASSIGN_OR_RETURN(auto container, decode(document));
  return std::move(container.categories_);
}

}  // namespace velmaro
