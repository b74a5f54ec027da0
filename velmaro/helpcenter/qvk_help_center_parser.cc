#include "velmaro/helpcenter/qvk_help_center_parser.h"

#include <algorithm>

#include "quorvel/platform/text_comparison.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

using J = JsonValueConversion;

namespace {

// Case-insensitive order of names (Unicode case folding); an absent name
// sorts before every present one.
int compareIgnoringCase(std::optional<std::string_view> a, std::optional<std::string_view> b) {
  if (!a || !b) return a ? 1 : (b ? -1 : 0);
  return quorvel::platform::TextComparison::caseInsensitiveCompare(*a, *b);
}

// A view of the record's name (a std::optional<std::string> or an
// OptionalText), not a copy: the sort compares names many times.
std::optional<std::string_view> nameOf(const auto& optionalRecord) {
  if (!optionalRecord || !optionalRecord->name) return std::nullopt;
  return std::string_view(*optionalRecord->name);
}

}  // namespace

QVKHelpCenterParser::QVKHelpCenterParser(const boost::json::object& response) {
  if (const auto* sections = J::array(response, "sections")) {
    sectionLookup_ = createSectionLookup(*sections);
  }
  if (const auto* categories = J::array(response, "categories")) {
    categoryLookup_ = createCategoryLookup(*categories);
  }
  if (const auto* users = J::array(response, "users")) userLookup_ = createAuthorLookup(*users);
}

QVKHelpCenterParser::SectionLookup QVKHelpCenterParser::createSectionLookup(
    const boost::json::array& sections) {
  SectionLookup lookup;
  lookup.reserve(sections.size());
  for (const auto& element : sections) {
    auto section = QVKHelpCenterSection::parseSection(J::asObject(element));
    if (section.identifier) lookup.insert_or_assign(*section.identifier, std::move(section));
  }
  return lookup;
}

QVKHelpCenterParser::CategoryLookup QVKHelpCenterParser::createCategoryLookup(
    const boost::json::array& categories) {
  CategoryLookup lookup;
  lookup.reserve(categories.size());
  for (const auto& element : categories) {
    auto category = QVKHelpCenterCategory::parseCategory(J::asObject(element));
    if (category.identifier) lookup.insert_or_assign(*category.identifier, std::move(category));
  }
  return lookup;
}

QVKHelpCenterParser::UserLookup QVKHelpCenterParser::createAuthorLookup(
    const boost::json::array& users) {
  UserLookup lookup;
  lookup.reserve(users.size());
  for (const auto& element : users) {
    const auto& user = J::asObject(element);
    auto id = J::identifier(user, "id");
    auto name = J::string(user, "name");
    if (id && name) lookup.insert_or_assign(*id, std::move(*name));
  }
  return lookup;
}

std::vector<QVKHelpCenterArticle> QVKHelpCenterParser::parseArticles(
    const boost::json::object& response) const {
  return parseArticlesWithRootKey(response, "articles");
}

std::vector<QVKHelpCenterArticle> QVKHelpCenterParser::parseArticleSearchResults(
    const boost::json::object& response) const {
  return parseArticlesWithRootKey(response, "results");
}

const QVKHelpCenterSection* QVKHelpCenterParser::sectionFor(
    const QVKHelpCenterArticle& article) const {
  if (!article.section_id) return nullptr;
  const auto it = sectionLookup_.find(*article.section_id);
  return it == sectionLookup_.end() ? nullptr : &it->second;
}

const QVKHelpCenterCategory* QVKHelpCenterParser::categoryFor(
    const QVKHelpCenterSection* section) const {
  if (section == nullptr || !section->category_id) return nullptr;
  const auto it = categoryLookup_.find(*section->category_id);
  return it == categoryLookup_.end() ? nullptr : &it->second;
}

std::vector<QVKHelpCenterArticle> QVKHelpCenterParser::parseArticlesWithRootKey(
    const boost::json::object& response, std::string_view rootKey) const {
  std::vector<QVKHelpCenterArticle> articles;
  const auto* elements = J::array(response, rootKey);
  if (elements == nullptr) return articles;
  // Breadcrumbs only when the answer side-loads both levels; otherwise they
  // stay absent rather than reading "(null) • (null)".
  const bool withParents =
      response.if_contains("sections") != nullptr && response.if_contains("categories") != nullptr;
  articles.reserve(elements->size());
  for (const auto& element : *elements) {
    auto article = QVKHelpCenterArticle::parseArticle(J::asObject(element));
    if (article.author_id) {
      if (auto it = userLookup_.find(*article.author_id); it != userLookup_.end()) {
        article.author_name = it->second;
      }
    }
    if (withParents) {
      const auto* section = sectionFor(article);
      const auto* category = categoryFor(section);
      // A section's name is a std::optional<std::string>, a category's an
      // OptionalText: both read as views, neither copied.
      const auto name = [](const auto& n) -> std::string_view {
        return n ? std::string_view(*n) : std::string_view(kAbsentName);
      };
      const auto categoryName = category ? name(category->name) : std::string_view(kAbsentName);
      const auto sectionName = section ? name(section->name) : std::string_view(kAbsentName);
      std::string parents;
      parents.reserve(categoryName.size() + sectionName.size() + 5);
      parents.append(categoryName).append(" \u2022 ").append(sectionName);
      article.articleParents = std::move(parents);
    }
    articles.push_back(std::move(article));
  }
  return articles;
}

std::vector<QVKHelpCenterFlatArticle> QVKHelpCenterParser::parseFlatArticles(
    const boost::json::object& response) const {
  auto articles = parseArticles(response);
  std::vector<QVKHelpCenterFlatArticle> flat;
  flat.reserve(articles.size());
  for (auto& article : articles) {
    const auto* section = sectionFor(article);
    const auto* category = categoryFor(section);
    QVKHelpCenterFlatArticle entry{std::move(article), std::nullopt, std::nullopt};
    if (section != nullptr) entry.section = *section;
    if (category != nullptr) entry.category = *category;
    flat.push_back(std::move(entry));
  }
  std::sort(flat.begin(), flat.end(), [](const auto& a, const auto& b) {
    if (int c = compareIgnoringCase(nameOf(a.category), nameOf(b.category)); c != 0) return c < 0;
    if (int c = compareIgnoringCase(nameOf(a.section), nameOf(b.section)); c != 0) return c < 0;
    return compareIgnoringCase(a.article.title, b.article.title) < 0;
  });
  return flat;
}

}  // namespace velmaro
