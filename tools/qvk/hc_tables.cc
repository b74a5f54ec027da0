#include "tools/qvk/hc_tables.h"

#include <optional>
#include <string>

#include "velmaro/util/qvk_date_util.h"

namespace qvk {

namespace {

using velmaro::QVKHelpCenterArticle;

std::string text(const std::optional<std::string>& value) {
  return value.value_or("");
}

std::string text(const velmaro::OptionalText& value) {
  return value.value_or("");
}

std::string number(const std::optional<std::int64_t>& value) {
  return value ? std::to_string(*value) : std::string();
}

std::string date(const std::optional<std::chrono::system_clock::time_point>& value) {
  if (!value) return {};
  // The date part of the wire format is enough in a table.
  return velmaro::QVKDateUtil::stringFromDate(*value).substr(0, 10);
}

std::string votes(const QVKHelpCenterArticle& article) {
  if (!article.voteSum || !article.voteCount) return {};
  return "+" + std::to_string(article.getUpvoteCount()) + " -" +
         std::to_string(article.getDownvoteCount());
}

std::string labels(const std::optional<std::vector<std::string>>& names) {
  std::string joined;
  for (const auto& name : names.value_or(std::vector<std::string>{})) {
    if (!joined.empty()) joined += ",";
    joined += name;
  }
  return joined;
}

Table::Column idColumn() {
  return {"ID", 20, true};
}

// The table with a row per record, made from the record when printed.
template <class R, class Cells>
Table rowsOf(Table table, const std::vector<R>& records, Cells cells) {
  table.setRows(records.size(), [&records, cells](std::size_t i) { return cells(records[i]); });
  return table;
}

}  // namespace

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterCategory>& categories) {
  return rowsOf(Table({idColumn(), {"NAME", 40}, {"DESCRIPTION", 50}, {"LOCALE", 8}}, "category",
                      "categories"),
                categories, [](const auto& c) {
                  return std::vector<std::string>{number(c.identifier), text(c.name),
                                                  text(c.categoryDescription), text(c.locale)};
                });
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterSection>& sections) {
  return rowsOf(Table({idColumn(), {"CATEGORY", 20, true}, {"NAME", 40}, {"DESCRIPTION", 50}},
                      "section", "sections"),
                sections, [](const auto& s) {
                  return std::vector<std::string>{number(s.identifier), number(s.category_id),
                                                  text(s.name), text(s.sectionDescription)};
                });
}

Table HcTables::of(const std::vector<QVKHelpCenterArticle>& articles) {
  return rowsOf(Table({idColumn(),
                       {"TITLE", 48},
                       {"AUTHOR", 18},
                       {"CREATED", 10},
                       {"VOTES", 9},
                       {"LABELS", 24}},
                      "article", "articles"),
                articles, [](const auto& a) {
                  return std::vector<std::string>{
                      number(a.identifier), text(a.title), text(a.author_name),
                      date(a.created_at),   votes(a),      labels(a.labelNames)};
                });
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterFlatArticle>& articles) {
  return rowsOf(
      Table({idColumn(), {"TITLE", 48}, {"SECTION", 24}, {"CATEGORY", 24}, {"CREATED", 10}},
            "article", "articles"),
      articles, [](const auto& f) {
        return std::vector<std::string>{number(f.article.identifier), text(f.article.title),
                                        f.section ? text(f.section->name) : "",
                                        f.category ? text(f.category->name) : "",
                                        date(f.article.created_at)};
      });
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterSimpleArticle>& articles) {
  return rowsOf(Table({idColumn(), {"TITLE", 70}}, "suggestion", "suggestions"), articles,
                [](const auto& a) {
                  return std::vector<std::string>{text(a.id), text(a.title)};
                });
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterAttachment>& attachments) {
  return rowsOf(
      Table(
          {idColumn(), {"FILE", 36}, {"TYPE", 24}, {"SIZE", 10, true}, {"INLINE", 6}, {"URL", 90}},
          "attachment", "attachments"),
      attachments, [](const auto& a) {
        return std::vector<std::string>{number(a.identifier),      text(a.file_name),
                                        text(a.content_type),      a.humanReadableFileSize(),
                                        a.isInline ? "yes" : "no", text(a.content_url)};
      });
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterArticleVote>& votes) {
  return rowsOf(Table({idColumn(),
                       {"ARTICLE", 20, true},
                       {"VALUE", 5, true},
                       {"USER", 20, true},
                       {"CREATED", 10}},
                      "vote", "votes"),
                votes, [](const auto& v) {
                  return std::vector<std::string>{number(v.identifier), number(v.itemId),
                                                  text(v.value), number(v.userId),
                                                  date(v.createdAt)};
                });
}

}  // namespace qvk
