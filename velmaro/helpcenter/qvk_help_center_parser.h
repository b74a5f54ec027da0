#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_flat_article.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"

namespace velmaro {

// Joins an answer's articles with the sections, categories and users that
// the same answer side-loads, through lookup tables keyed by their "id".
class QVKHelpCenterParser {
 public:
  using SectionLookup = std::unordered_map<std::int64_t, QVKHelpCenterSection>;
  using CategoryLookup = std::unordered_map<std::int64_t, QVKHelpCenterCategory>;
  using UserLookup = std::unordered_map<std::int64_t, std::string>;

  // Builds the lookups from the answer's "sections", "categories" and "users".
  explicit QVKHelpCenterParser(const boost::json::object& response);
  static QVKHelpCenterParser initWithDictionary(const boost::json::object& response) {
    return QVKHelpCenterParser(response);
  }

  // Items without a numeric "id" are left out; a later item with the same id
  // replaces an earlier one.
  static SectionLookup createSectionLookup(const boost::json::array& sections);
  static CategoryLookup createCategoryLookup(const boost::json::array& categories);
  static UserLookup createAuthorLookup(const boost::json::array& users);

  // The articles under "articles" (lists) or "results" (search answers).
  std::vector<QVKHelpCenterArticle> parseArticles(const boost::json::object& response) const;
  std::vector<QVKHelpCenterArticle> parseArticleSearchResults(
      const boost::json::object& response) const;
  // The articles under `rootKey`, in the server's order, with their authors
  // and, when the answer side-loads both sections and categories, their
  // breadcrumb. The doubled label of the name is how callers know it.
  std::vector<QVKHelpCenterArticle> parseArticlesWithRootKey(const boost::json::object& response,
                                                             std::string_view rootKey) const;
  // The articles under "articles" with their section and category, sorted by
  // category name, section name and title, ignoring case.
  std::vector<QVKHelpCenterFlatArticle> parseFlatArticles(
      const boost::json::object& response) const;

  const SectionLookup& sectionLookup() const { return sectionLookup_; }
  const CategoryLookup& categoryLookup() const { return categoryLookup_; }
  const UserLookup& userLookup() const { return userLookup_; }

  // The text an absent name gives inside a breadcrumb.
  static constexpr const char* kAbsentName = "(null)";

 private:
  const QVKHelpCenterSection* sectionFor(const QVKHelpCenterArticle& article) const;
  const QVKHelpCenterCategory* categoryFor(const QVKHelpCenterSection* section) const;

  SectionLookup sectionLookup_;
  CategoryLookup categoryLookup_;
  UserLookup userLookup_;
};

}  // namespace velmaro
