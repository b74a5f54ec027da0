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

}  // namespace

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterCategory>& categories) {
  Table table({idColumn(), {"NAME", 40}, {"DESCRIPTION", 50}, {"LOCALE", 8}}, "category",
              "categories");
  for (const auto& c : categories) {
    table.addRow({number(c.identifier), text(c.name), text(c.categoryDescription), text(c.locale)});
  }
  return table;
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterSection>& sections) {
  Table table({idColumn(), {"CATEGORY", 20, true}, {"NAME", 40}, {"DESCRIPTION", 50}}, "section",
              "sections");
  for (const auto& s : sections) {
    table.addRow(
        {number(s.identifier), number(s.category_id), text(s.name), text(s.sectionDescription)});
  }
  return table;
}

Table HcTables::of(const std::vector<QVKHelpCenterArticle>& articles) {
  Table table(
      {idColumn(), {"TITLE", 48}, {"AUTHOR", 18}, {"CREATED", 10}, {"VOTES", 9}, {"LABELS", 24}},
      "article", "articles");
  for (const auto& a : articles) {
    table.addRow({number(a.identifier), text(a.title), text(a.author_name), date(a.created_at),
                  votes(a), labels(a.labelNames)});
  }
  return table;
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterFlatArticle>& articles) {
  Table table({idColumn(), {"TITLE", 48}, {"SECTION", 24}, {"CATEGORY", 24}, {"CREATED", 10}},
              "article", "articles");
  for (const auto& f : articles) {
    table.addRow({number(f.article.identifier), text(f.article.title),
                  f.section ? text(f.section->name) : "", f.category ? text(f.category->name) : "",
                  date(f.article.created_at)});
  }
  return table;
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterSimpleArticle>& articles) {
  Table table({idColumn(), {"TITLE", 70}}, "suggestion", "suggestions");
  for (const auto& a : articles) table.addRow({text(a.id), text(a.title)});
  return table;
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterAttachment>& attachments) {
  Table table(
      {idColumn(), {"FILE", 36}, {"TYPE", 24}, {"SIZE", 10, true}, {"INLINE", 6}, {"URL", 90}},
      "attachment", "attachments");
  for (const auto& a : attachments) {
    table.addRow({number(a.identifier), text(a.file_name), text(a.content_type),
                  a.humanReadableFileSize(), a.isInline ? "yes" : "no", text(a.content_url)});
  }
  return table;
}

Table HcTables::of(const std::vector<velmaro::QVKHelpCenterArticleVote>& votes) {
  Table table(
      {idColumn(), {"ARTICLE", 20, true}, {"VALUE", 5, true}, {"USER", 20, true}, {"CREATED", 10}},
      "vote", "votes");
  for (const auto& v : votes) {
    table.addRow({number(v.identifier), number(v.itemId), text(v.value), number(v.userId),
                  date(v.createdAt)});
  }
  return table;
}

}  // namespace qvk
