#include "tools/qvk/overview_tree.h"

#include "quorvel/platform/html_text.h"
#include "tools/qvk/table.h"

namespace qvk {

namespace {

constexpr std::size_t kTitleWidth = 70;

std::string count(std::int64_t n, const char* singular, const char* plural) {
  return std::to_string(n) + " " + (n == 1 ? singular : plural);
}

// The tree carries names as the service wrote them, entities included; a
// reader wants them decoded. --json keeps them as they came.
std::string title(const std::string& name) {
  auto plain = quorvel::platform::HtmlText::toPlainText(name);
  return Table::truncate(plain.value_or(name), kTitleWidth);
}

}  // namespace

void OverviewTree::print(std::ostream& out, const Categories& categories) {
  for (const auto& category : categories) {
    if (!category) continue;
    out << title(category->name()) << "  [category " << category->id() << ", "
        << count(category->section_count(), "section", "sections") << "]\n";
    for (const auto& section : category->sections()) {
      out << "  " << title(section.name()) << "  [section " << section.id() << ", "
          << section.articles().size() << " of "
          << count(section.article_count(), "article", "articles") << "]\n";
      for (const auto& article : section.articles()) {
        out << "    - " << title(article.name()) << "  [" << article.id() << "]\n";
      }
    }
  }
  out << count(static_cast<std::int64_t>(categories.size()), "category", "categories") << '\n';
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
