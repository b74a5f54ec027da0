#include "emulator/help_center_catalog.h"

#include <algorithm>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"

namespace qvk::emulator {

namespace json = boost::json;

namespace {

constexpr const char* kCategoryColumns =
    "SELECT id, name, description, position, created_at, updated_at FROM categories ";
constexpr const char* kSectionColumns =
    "SELECT id, category_id, name, description, position, created_at, updated_at FROM sections ";
constexpr const char* kArticleSelect =
    "SELECT a.id, a.section_id, s.category_id, a.author_id, a.title, a.body, a.position, "
    "a.promoted, a.label_names, a.created_at, a.updated_at, "
    "COALESCE((SELECT SUM(value) FROM article_votes v WHERE v.article_id = a.id), 0), "
    "(SELECT COUNT(*) FROM article_votes v WHERE v.article_id = a.id), s.position, c.position "
    "FROM articles a JOIN sections s ON s.id = a.section_id AND s.locale = a.locale "
    "JOIN categories c ON c.id = s.category_id AND c.locale = a.locale WHERE a.locale = ? ";
constexpr const char* kVoteColumns =
    "SELECT id, user_id, value, article_id, created_at, updated_at FROM article_votes ";

std::string slug(std::string_view title) {
  std::string out;
  for (unsigned char c : title) {
    if (std::isalnum(c)) {
      out.push_back(static_cast<char>(std::tolower(c)));
    } else if (!out.empty() && out.back() != '-') {
      out.push_back('-');
    }
  }
  while (!out.empty() && out.back() == '-') out.pop_back();
  return out;
}

std::vector<std::string> labelsFrom(const std::string& text) {
  std::vector<std::string> out;
  boost::system::error_code ec;
  json::value v = json::parse(text, ec);
  if (ec || !v.is_array()) return out;
  for (const auto& l : v.as_array())
    if (l.is_string()) out.emplace_back(l.as_string());
  return out;
}

ArticleRow articleFrom(const SqlRow& r) {
  ArticleRow a;
  a.id = r.integer(0);
  a.sectionId = r.integer(1);
  a.categoryId = r.integer(2);
  a.authorId = r.integer(3);
  a.title = r.text(4);
  a.body = r.text(5);
  a.position = r.integer(6);
  a.promoted = r.integer(7) != 0;
  a.labels = labelsFrom(r.text(8));
  a.createdAt = r.text(9);
  a.updatedAt = r.text(10);
  a.voteSum = r.integer(11);
  a.voteCount = r.integer(12);
  a.sectionPosition = r.integer(13);
  a.categoryPosition = r.integer(14);
  return a;
}

}  // namespace

std::vector<ArticleRow> withAnyLabel(std::vector<ArticleRow> articles,
                                     const std::vector<std::string>& labels) {
  if (labels.empty()) return articles;
  std::erase_if(articles, [&](const ArticleRow& a) {
    return std::none_of(labels.begin(), labels.end(), [&](const std::string& l) {
      return std::find(a.labels.begin(), a.labels.end(), l) != a.labels.end();
    });
  });
  return articles;
}

bool HelpCenterCatalog::hasLocale(const std::string& locale) {
  return db_.queryOne("SELECT 1 FROM categories WHERE locale = ? LIMIT 1", {locale}).has_value();
}

json::object HelpCenterCatalog::categoryJson(const SqlRow& r, const std::string& locale) const {
  auto id = r.integer(0);
  auto name = r.text(1);
  return json::object{{"id", id},
                      {"url", base_ + "/api/v2/help_center/" + locale + "/categories/" +
                                  std::to_string(id) + ".json"},
                      {"html_url", base_ + "/hc/" + locale + "/categories/" + std::to_string(id) +
                                       "-" + slug(name)},
                      {"position", r.integer(3)},
                      {"created_at", r.text(4)},
                      {"updated_at", r.text(5)},
                      {"name", name},
                      {"description", r.text(2)},
                      {"locale", locale},
                      {"source_locale", "en-us"},
                      {"outdated", false}};
}

json::object HelpCenterCatalog::sectionJson(const SqlRow& r, const std::string& locale) const {
  auto id = r.integer(0);
  auto name = r.text(2);
  return json::object{
      {"id", id},
      {"url",
       base_ + "/api/v2/help_center/" + locale + "/sections/" + std::to_string(id) + ".json"},
      {"html_url", base_ + "/hc/" + locale + "/sections/" + std::to_string(id) + "-" + slug(name)},
      {"category_id", r.integer(1)},
      {"position", r.integer(4)},
      {"sorting", "manual"},
      {"created_at", r.text(5)},
      {"updated_at", r.text(6)},
      {"name", name},
      {"description", r.text(3)},
      {"locale", locale},
      {"source_locale", "en-us"},
      {"outdated", false},
      {"parent_section_id", nullptr},
      {"theme_template", "section_page"}};
}

json::array HelpCenterCatalog::categories(const std::string& locale) {
  json::array out;
  for (const auto& r : db_.query(
           std::string(kCategoryColumns) + "WHERE locale = ? ORDER BY position, id", {locale}))
    out.push_back(categoryJson(r, locale));
  return out;
}

std::optional<json::object> HelpCenterCatalog::category(const std::string& locale,
                                                        std::int64_t id) {
  auto r =
      db_.queryOne(std::string(kCategoryColumns) + "WHERE locale = ? AND id = ?", {locale, id});
  if (!r) return std::nullopt;
  return categoryJson(*r, locale);
}

json::array HelpCenterCatalog::sections(const std::string& locale,
                                        std::optional<std::int64_t> categoryId) {
  json::array out;
  auto rows =
      categoryId
          ? db_.query(std::string(kSectionColumns) +
                          "WHERE locale = ? AND category_id = ? ORDER BY position, id",
                      {locale, *categoryId})
          : db_.query(std::string(kSectionColumns) + "WHERE locale = ? ORDER BY position, id",
                      {locale});
  for (const auto& r : rows) out.push_back(sectionJson(r, locale));
  return out;
}

std::optional<json::object> HelpCenterCatalog::section(const std::string& locale, std::int64_t id) {
  auto r = db_.queryOne(std::string(kSectionColumns) + "WHERE locale = ? AND id = ?", {locale, id});
  if (!r) return std::nullopt;
  return sectionJson(*r, locale);
}

json::array HelpCenterCatalog::sectionsWithIds(const std::string& locale,
                                               const std::vector<std::int64_t>& ids) {
  json::array out;
  std::vector<std::int64_t> seen;
  for (auto id : ids) {
    if (std::find(seen.begin(), seen.end(), id) != seen.end()) continue;
    seen.push_back(id);
    if (auto s = section(locale, id)) out.push_back(std::move(*s));
  }
  return out;
}

json::array HelpCenterCatalog::categoriesWithIds(const std::string& locale,
                                                 const std::vector<std::int64_t>& ids) {
  json::array out;
  std::vector<std::int64_t> seen;
  for (auto id : ids) {
    if (std::find(seen.begin(), seen.end(), id) != seen.end()) continue;
    seen.push_back(id);
    if (auto c = category(locale, id)) out.push_back(std::move(*c));
  }
  return out;
}

std::vector<ArticleRow> HelpCenterCatalog::articles(const std::string& locale) {
  std::vector<ArticleRow> out;
  for (const auto& r :
       db_.query(std::string(kArticleSelect) + "ORDER BY c.position, s.position, a.position, a.id",
                 {locale}))
    out.push_back(articleFrom(r));
  return out;
}

std::optional<ArticleRow> HelpCenterCatalog::article(const std::string& locale, std::int64_t id) {
  auto r = db_.queryOne(std::string(kArticleSelect) + "AND a.id = ?", {locale, id});
  if (!r) return std::nullopt;
  return articleFrom(*r);
}

bool HelpCenterCatalog::articleExists(std::int64_t id) {
  return db_.queryOne("SELECT 1 FROM articles WHERE id = ? LIMIT 1", {id}).has_value();
}

json::object HelpCenterCatalog::articleJson(const ArticleRow& a, const std::string& locale) const {
  json::array labels;
  for (const auto& l : a.labels) labels.emplace_back(l);
  return json::object{{"id", a.id},
                      {"url", base_ + "/api/v2/help_center/" + locale + "/articles/" +
                                  std::to_string(a.id) + ".json"},
                      {"html_url", base_ + "/hc/" + locale + "/articles/" + std::to_string(a.id) +
                                       "-" + slug(a.title)},
                      {"author_id", a.authorId},
                      {"comments_disabled", false},
                      {"draft", false},
                      {"promoted", a.promoted},
                      {"position", a.position},
                      {"vote_sum", a.voteSum},
                      {"vote_count", a.voteCount},
                      {"section_id", a.sectionId},
                      {"created_at", a.createdAt},
                      {"updated_at", a.updatedAt},
                      {"edited_at", a.updatedAt},
                      {"name", a.title},
                      {"title", a.title},
                      {"source_locale", "en-us"},
                      {"locale", locale},
                      {"outdated", false},
                      {"outdated_locales", json::array{}},
                      {"permission_group_id", 1},
                      {"user_segment_id", nullptr},
                      {"label_names", std::move(labels)},
                      {"body", a.body}};
}

json::array HelpCenterCatalog::attachments(const std::string& locale, std::int64_t articleId) {
  json::array out;
  for (const auto& r :
       db_.query("SELECT id, file_name, content_type, inline, LENGTH(content), created_at "
                 "FROM article_attachments WHERE article_id = ? ORDER BY id",
                 {articleId})) {
    auto id = r.integer(0);
    out.push_back(json::object{
        {"id", id},
        {"url", base_ + "/api/v2/help_center/" + locale + "/articles/attachments/" +
                    std::to_string(id) + ".json"},
        {"article_id", articleId},
        {"file_name", r.text(1)},
        {"content_url", base_ + "/hc/article_attachments/" + std::to_string(id) + "/" + r.text(1)},
        {"content_type", r.text(2)},
        {"size", r.integer(4)},
        {"inline", r.integer(3) != 0},
        {"created_at", r.text(5)},
        {"updated_at", r.text(5)}});
  }
  return out;
}

std::optional<AttachmentContent> HelpCenterCatalog::attachmentContent(std::int64_t id) {
  auto r = db_.queryOne(
      "SELECT file_name, content_type, content FROM article_attachments WHERE id = ?", {id});
  if (!r) return std::nullopt;
  return AttachmentContent{r->text(0), r->text(1), r->text(2)};
}

json::object HelpCenterCatalog::voteJson(const SqlRow& r) const {
  auto id = r.integer(0);
  return json::object{{"id", id},
                      {"url", base_ + "/api/v2/help_center/votes/" + std::to_string(id) + ".json"},
                      {"user_id", r.integer(1)},
                      {"value", r.integer(2)},
                      {"item_id", r.integer(3)},
                      {"item_type", "Article"},
                      {"created_at", r.text(4)},
                      {"updated_at", r.text(5)}};
}

json::object HelpCenterCatalog::vote(std::int64_t articleId, std::int64_t userId, int value,
                                     bool& created) {
  auto guard = db_.lock();
  const std::string now = http::nowIso();
  created = db_.execute(
                "UPDATE article_votes SET value = ?, updated_at = ? "
                "WHERE article_id = ? AND user_id = ?",
                {std::int64_t{value}, now, articleId, userId}) == 0;
  if (created) {
    db_.execute(
        "INSERT INTO article_votes (article_id, user_id, value, created_at, updated_at) "
        "VALUES (?, ?, ?, ?, ?)",
        {articleId, userId, std::int64_t{value}, now, now});
  }
  auto r = db_.queryOne(std::string(kVoteColumns) + "WHERE article_id = ? AND user_id = ?",
                        {articleId, userId});
  return voteJson(*r);
}

bool HelpCenterCatalog::removeVote(std::int64_t voteId, std::int64_t userId) {
  return db_.execute("DELETE FROM article_votes WHERE id = ? AND user_id = ?", {voteId, userId}) >
         0;
}

void HelpCenterCatalog::recordView(std::int64_t articleId, const std::string& locale,
                                   std::optional<std::int64_t> userId, const std::string& body) {
  db_.execute(
      "INSERT INTO article_views (article_id, locale, user_id, body, received_at) "
      "VALUES (?, ?, ?, ?, ?)",
      {articleId, locale, userId ? SqlValue(*userId) : SqlValue(nullptr),
       body.empty() ? SqlValue(nullptr) : SqlValue(body), http::nowIso()});
}

}  // namespace qvk::emulator
