#include "tools/qvk/requests_tables.h"

#include <string>

#include <boost/json/serialize.hpp>

#include "velmaro/util/qvk_date_util.h"

namespace qvk {

namespace {

std::string text(const std::optional<std::string>& value) {
  return value.value_or("");
}

std::string number(const std::optional<std::int64_t>& value) {
  return value ? std::to_string(*value) : std::string();
}

// Requests and comments move within a day: the time matters, so the whole
// wire timestamp is shown.
std::string time(const std::optional<std::chrono::system_clock::time_point>& value) {
  return value ? velmaro::QVKDateUtil::stringFromDate(*value) : std::string();
}

// The author's name; the id when the comment came without its author or the
// author has no name (an anonymous user who gave none).
std::string author(const velmaro::QVKCommentWithUser& comment) {
  const auto& user = comment.user();
  const auto id = number(comment.comment().authorId);
  if (!user) return id;
  const auto name = text(user->name).empty() ? "user " + id : text(user->name);
  return name + (user->isAgent ? " (agent)" : "");
}

// The comment's file names, comma-separated.
std::string fileNames(const velmaro::QVKComment& comment) {
  std::string joined;
  for (const auto& file : comment.attachments.value_or(std::vector<velmaro::QVKAttachment>{})) {
    if (!joined.empty()) joined += ",";
    joined += text(file.filename);
  }
  return joined;
}

std::string optionNames(const velmaro::QVKTicketField& field) {
  std::string joined;
  for (const auto& option : field.options) {
    if (!joined.empty()) joined += ",";
    joined += RequestsTables::rawText(option.name);
  }
  return joined;
}

}  // namespace

Table RequestsTables::of(const std::vector<velmaro::QVKRequest>& requests,
                         const std::optional<velmaro::RequestUpdates>& updates) {
  Table table({{"ID", 20, true},
               {"STATUS", 8},
               {"SUBJECT", 48},
               {"UPDATED", 20},
               {"COMMENTS", 8, true},
               {"UNREAD", 6}},
              "request", "requests");
  for (const auto& r : requests) {
    const bool unread = updates && updates->isRequestUnread(r.requestId.value_or(""));
    table.addRow({text(r.requestId), text(r.status), text(r.subject), time(r.updateAt),
                  number(r.commentCount), unread ? "*" : ""});
  }
  return table;
}

Table RequestsTables::of(const std::vector<velmaro::QVKCommentWithUser>& comments) {
  Table table({{"ID", 20, true}, {"AUTHOR", 24}, {"CREATED", 20}, {"BODY", 60}, {"FILES", 30}},
              "comment", "comments");
  for (const auto& c : comments) {
    table.addRow({number(c.comment().commentId), author(c), time(c.comment().createdAt),
                  text(c.comment().body), fileNames(c.comment())});
  }
  return table;
}

Table RequestsTables::of(const velmaro::RequestUpdates& updates) {
  Table table({{"REQUEST", 20, true}, {"UNREAD", 6, true}}, "updated request", "updated requests");
  for (const auto& [id, count] : updates.requestUpdates()) {
    table.addRow({id, std::to_string(count)});
  }
  return table;
}

Table RequestsTables::fields(const velmaro::QVKTicketForm& form) {
  Table table(
      {{"ID", 20, true}, {"TYPE", 4, true}, {"TITLE", 40}, {"REQUIRED", 8}, {"OPTIONS", 60}},
      "field", "fields");
  for (const auto& f : form.ticketFields) {
    // The unknown code is all bits set: -1 as the signed number it reads as.
    table.addRow({rawText(f.fieldId), std::to_string(static_cast<std::int64_t>(f.type)),
                  rawText(f.title), f.required ? "yes" : "no", optionNames(f)});
  }
  return table;
}

std::string RequestsTables::rawText(const std::optional<boost::json::value>& value) {
  if (!value) return {};
  if (value->is_string()) return std::string(value->get_string());
  return boost::json::serialize(*value);
}

}  // namespace qvk
