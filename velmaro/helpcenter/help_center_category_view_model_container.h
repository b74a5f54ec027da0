#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/helpcenter/help_center_category_view_model.h"

namespace velmaro {

// The article-tree document of the Help Center overview. It decodes whole or
// not at all: every key of every level is required.
class HelpCenterCategoryViewModelContainer {
 public:
  using Categories = std::vector<std::shared_ptr<HelpCenterCategoryViewModel>>;

  HelpCenterCategoryViewModelContainer() = delete;

  // Keys "category_count" and "categories".
  static quorvel::platform::Result<HelpCenterCategoryViewModelContainer> decode(
      const boost::json::value& document);
  // The categories of the document's bytes, or the decoding error.
  static quorvel::platform::Result<Categories> parse(std::string_view data);
  static quorvel::platform::Result<Categories> parseWithData(std::string_view data) {
    return parse(data);
  }

  std::int64_t category_count() const { return category_count_; }
  const Categories& categories() const { return categories_; }

 private:
  HelpCenterCategoryViewModelContainer(std::int64_t categoryCount, Categories categories)
      : category_count_(categoryCount), categories_(std::move(categories)) {}

  std::int64_t category_count_;
  Categories categories_;
};

using QVKHelpCenterCategoryViewModelContainer = HelpCenterCategoryViewModelContainer;

}  // namespace velmaro
