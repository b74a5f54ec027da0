#pragma once

#include <ostream>

#include <boost/json/value.hpp>

#include "velmaro/helpcenter/help_center_category_view_model_container.h"

namespace qvk {

// The Help Center overview: categories, their sections and the first
// articles of each, as an indented outline or as JSON keyed like the
// article-tree document.
class OverviewTree {
 public:
  using Categories = velmaro::HelpCenterCategoryViewModelContainer::Categories;

  static void print(std::ostream& out, const Categories& categories);
  static boost::json::value toJson(const Categories& categories);
};

}  // namespace qvk
