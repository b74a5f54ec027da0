#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace qvk::emulator {

class Database;
class SqlRow;

// One article of one locale with its vote totals.
struct ArticleRow {
  std::int64_t id = 0;
  std::int64_t sectionId = 0;
  std::int64_t categoryId = 0;
  std::int64_t authorId = 0;
  std::string title;
  std::string body;
  std::int64_t position = 0;
  bool promoted = false;
  std::vector<std::string> labels;
  std::string createdAt;
  std::string updatedAt;
  std::int64_t voteSum = 0;
  std::int64_t voteCount = 0;
  std::int64_t sectionPosition = 0;
  std::int64_t categoryPosition = 0;
};

// A stored article attachment with its bytes.
struct AttachmentContent {
  std::string fileName;
  std::string contentType;
  std::string bytes;
};

// Reads and writes the knowledge base and builds its records in the shape
// the service answers them. `base` is the URL the client used, so that url,
// html_url and content_url in answers point back at this emulator.
class HelpCenterCatalog {
 public:
  HelpCenterCatalog(Database& db, std::string base) : db_(db), base_(std::move(base)) {}

  bool hasLocale(const std::string& locale);
  const std::string& base() const { return base_; }

  boost::json::array categories(const std::string& locale);
  std::optional<boost::json::object> category(const std::string& locale, std::int64_t id);
  boost::json::array sections(const std::string& locale, std::optional<std::int64_t> categoryId);
  std::optional<boost::json::object> section(const std::string& locale, std::int64_t id);
  boost::json::array sectionsWithIds(const std::string& locale,
                                     const std::vector<std::int64_t>& ids);
  boost::json::array categoriesWithIds(const std::string& locale,
                                       const std::vector<std::int64_t>& ids);

  // All articles of the locale in tree order (category, section, article
  // position).
  std::vector<ArticleRow> articles(const std::string& locale);
  std::optional<ArticleRow> article(const std::string& locale, std::int64_t id);
  boost::json::object articleJson(const ArticleRow& a, const std::string& locale) const;
  bool articleExists(std::int64_t id);

  boost::json::array attachments(const std::string& locale, std::int64_t articleId);
  std::optional<AttachmentContent> attachmentContent(std::int64_t id);

  // Records the user's vote (+1 or -1), replacing an earlier one; answers the
  // vote record and whether it was new.
  boost::json::object vote(std::int64_t articleId, std::int64_t userId, int value, bool& created);
  // False when the vote does not exist or is another user's.
  bool removeVote(std::int64_t voteId, std::int64_t userId);
  void recordView(std::int64_t articleId, const std::string& locale,
                  std::optional<std::int64_t> userId, const std::string& body);

 private:
  boost::json::object categoryJson(const SqlRow& row, const std::string& locale) const;
  boost::json::object sectionJson(const SqlRow& row, const std::string& locale) const;
  boost::json::object voteJson(const SqlRow& row) const;

  Database& db_;
  std::string base_;
};

// Keeps the articles that carry at least one of `labels` (all when empty).
std::vector<ArticleRow> withAnyLabel(std::vector<ArticleRow> articles,
                                     const std::vector<std::string>& labels);

}  // namespace qvk::emulator
