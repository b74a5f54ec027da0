#include "tools/qvk/overview_tree.h"

#include "tools/qvk/table.h"

namespace qvk {

namespace {

constexpr std::size_t kTitleWidth = 70;

}  // namespace

void OverviewTree::print(std::ostream& out, const Categories& categories) {
  for (const auto& category : categories) {
    if (!category) continue;
    out << Table::truncate(category->name(), kTitleWidth) << "  [category " << category->id()
        << ", " << category->section_count() << " sections]\n";
    for (const auto& section : category->sections()) {
      out << "  " << Table::truncate(section.name(), kTitleWidth) << "  [section " << section.id()
          << ", " << section.articles().size() << " of " << section.article_count()
          << " articles]\n";
      for (const auto& article : section.articles()) {
        out << "    - " << Table::truncate(article.name(), kTitleWidth) << "  [" << article.id()
            << "]\n";
      }
    }
  }
  out << categories.size() << (categories.size() == 1 ? " category" : " categories") << '\n';
}

boost::json::value OverviewTree::toJson(const Categories& categories) {
  boost::json::array list;
  for (const auto& category : categories) {
    if (!category) continue;
    boost::json::array sections;
    for (const auto& section : category->sections()) {
      boost::json::array articles;
      for (const auto& article : section.articles()) {
        articles.push_back(boost::json::object{
            {"id", article.id()}, {"section_id", article.section_id()}, {"name", article.name()}});
      }
      sections.push_back(boost::json::object{{"id", section.id()},
                                             {"category_id", section.category_id()},
                                             {"name", section.name()},
                                             {"article_count", section.article_count()},
                                             {"articles", std::move(articles)}});
    }
    list.push_back(boost::json::object{{"id", category->id()},
                                       {"name", category->name()},
                                       {"section_count", category->section_count()},
                                       {"sections", std::move(sections)}});
  }
  return list;
}

}  // namespace qvk
