#include "emulator/request_store.h"

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"
#include "emulator/upload_store.h"

namespace qvk::emulator {

namespace json = boost::json;

std::string htmlFromPlainText(const std::string& text) {
  std::string out = "<p>";
  for (char c : text) {
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\n':
        out += "<br>";
        break;
      default:
        out.push_back(c);
    }
  }
  return out + "</p>";
}

std::int64_t RequestStore::insertComment(std::int64_t requestId, std::int64_t authorId,
                                         const std::string& body, const std::string& at) {
  auto next = db_.queryOne("SELECT COALESCE(MAX(id), 5000) + 1 FROM comments");
  db_.execute(
      "INSERT INTO comments (id, request_id, author_id, body, html_body, created_at) "
      "VALUES (?, ?, ?, ?, ?, ?)",
      {next->integer(0), requestId, authorId, body, htmlFromPlainText(body), at});
  return next->integer(0);
}

std::int64_t RequestStore::create(const NewRequest& r, std::int64_t& commentId) {
  auto guard = db_.lock();
  auto next = db_.queryOne("SELECT COALESCE(MAX(id), 100) + 1 FROM requests");
  const auto id = next->integer(0);
  const auto now = http::nowIso();
  json::array tags;
  for (const auto& t : r.tags) tags.emplace_back(t);
  db_.execute(
      "INSERT INTO requests (id, requester_id, status, subject, description, ticket_form_id, "
      "tags, custom_fields, metadata, created_at, updated_at, public_updated_at) "
      "VALUES (?, ?, 'new', ?, ?, ?, ?, ?, ?, ?, ?, ?)",
      {id, r.requesterId, r.subject, r.description,
       r.ticketFormId ? SqlValue(*r.ticketFormId) : SqlValue(nullptr), json::serialize(tags),
       json::serialize(r.customFields),
       r.metadata.is_null() ? SqlValue(nullptr) : SqlValue(json::serialize(r.metadata)), now, now,
       now});
  commentId = insertComment(id, r.requesterId, r.description, now);
  UploadStore(db_, base_).attach(r.uploads, commentId);
  return id;
}

std::int64_t RequestStore::addComment(std::int64_t requestId, std::int64_t authorId,
                                      const std::string& body,
                                      const std::vector<std::string>& uploads,
                                      const std::string& newStatus) {
  auto guard = db_.lock();
  const auto now = http::nowIso();
  auto commentId = insertComment(requestId, authorId, body, now);
  UploadStore(db_, base_).attach(uploads, commentId);
  std::string status = newStatus;
  if (status.empty()) {
    auto agent = db_.queryOne("SELECT agent FROM users WHERE id = ?", {authorId});
    bool byAgent = agent && agent->integer(0) != 0;
    std::string old = statusOf(requestId);
    status = byAgent ? (old == "solved" ? old : "pending") : (old == "new" ? old : "open");
  }
  db_.execute("UPDATE requests SET status = ?, updated_at = ?, public_updated_at = ? WHERE id = ?",
              {status, now, now, requestId});
  return commentId;
}

std::optional<std::int64_t> RequestStore::requesterOf(std::int64_t requestId) {
  auto r = db_.queryOne("SELECT requester_id FROM requests WHERE id = ?", {requestId});
  if (!r) return std::nullopt;
  return r->integer(0);
}

std::string RequestStore::statusOf(std::int64_t requestId) {
  auto r = db_.queryOne("SELECT status FROM requests WHERE id = ?", {requestId});
  return r ? r->text(0) : std::string();
}

namespace {

// The ORDER BY clause; the column comes from RequestOrder, never from a client.
std::string orderBy(const RequestOrder& order) {
  std::string column = order.column == "created_at" ? "created_at" : "updated_at";
  std::string direction = order.descending ? " DESC" : " ASC";
  return " ORDER BY " + column + direction + ", id" + direction;
}

}  // namespace

std::vector<std::int64_t> RequestStore::requestsOf(std::int64_t userId,
                                                   const std::set<std::string>& statuses,
                                                   const RequestOrder& order) {
  std::vector<std::int64_t> out;
  for (const auto& r : db_.query(
           "SELECT id, status FROM requests WHERE requester_id = ?" + orderBy(order), {userId}))
    if (statuses.empty() || statuses.count(r.text(1))) out.push_back(r.integer(0));
  return out;
}

std::vector<std::int64_t> RequestStore::requestsWithIds(const std::vector<std::int64_t>& ids,
                                                        const std::set<std::string>& statuses,
                                                        const RequestOrder& order) {
  std::vector<std::int64_t> out;
  for (const auto& r : db_.query("SELECT id, status FROM requests" + orderBy(order))) {
    bool wanted = std::find(ids.begin(), ids.end(), r.integer(0)) != ids.end();
    if (wanted && (statuses.empty() || statuses.count(r.text(1)))) out.push_back(r.integer(0));
  }
  return out;
}

json::object RequestStore::commentJson(std::int64_t commentId) {
  auto r = db_.queryOne(
      "SELECT id, request_id, author_id, body, html_body, created_at FROM comments WHERE id = ?",
      {commentId});
  if (!r) return {};
  return json::object{{"id", r->integer(0)},
                      {"type", "Comment"},
                      {"request_id", r->integer(1)},
                      {"body", r->text(3)},
                      {"html_body", r->text(4)},
                      {"plain_body", r->text(3)},
                      {"public", true},
                      {"author_id", r->integer(2)},
                      {"attachments", UploadStore(db_, base_).attachmentsOfComment(commentId)},
                      {"created_at", r->text(5)}};
}

std::vector<std::int64_t> RequestStore::commentIds(std::int64_t requestId,
                                                   const CommentFilter& filter) {
  std::vector<std::int64_t> out;
  auto rows = db_.query(
      "SELECT c.id FROM comments c JOIN users u ON u.id = c.author_id "
      "WHERE c.request_id = ? AND c.created_at >= ? AND (? = 0 OR u.agent = 1) "
      "ORDER BY c.created_at, c.id",
      {requestId, filter.since, std::int64_t{filter.agentsOnly ? 1 : 0}});
  for (const auto& r : rows) out.push_back(r.integer(0));
  if (filter.newestFirst) std::reverse(out.begin(), out.end());
  return out;
}

std::vector<std::int64_t> RequestStore::commentingAgents(std::int64_t requestId) {
  std::vector<std::int64_t> out;
  for (const auto& r : db_.query("SELECT c.author_id FROM comments c JOIN users u ON u.id = "
                                 "c.author_id WHERE c.request_id = ? AND u.agent = 1 "
                                 "GROUP BY c.author_id ORDER BY MAX(c.created_at) DESC",
                                 {requestId}))
    out.push_back(r.integer(0));
  return out;
}

std::vector<std::int64_t> RequestStore::commentAuthors(const std::vector<std::int64_t>& ids) {
  std::vector<std::int64_t> out;
  for (auto id : ids)
    if (auto r = db_.queryOne("SELECT author_id FROM comments WHERE id = ?", {id}))
      out.push_back(r->integer(0));
  return out;
}

json::object RequestStore::requestJson(std::int64_t id, const std::set<std::string>& include) {
  auto r = db_.queryOne(
      "SELECT id, requester_id, status, subject, description, type, priority, ticket_form_id, "
      "custom_fields, created_at, updated_at, public_updated_at, "
      "(SELECT COUNT(*) FROM comments c WHERE c.request_id = requests.id), "
      "(SELECT MIN(id) FROM comments c WHERE c.request_id = requests.id), "
      "(SELECT id FROM comments c WHERE c.request_id = requests.id "
      " ORDER BY created_at DESC, id DESC LIMIT 1) FROM requests WHERE id = ?",
      {id});
  if (!r) return {};
  boost::system::error_code ec;
  json::value customFields = json::parse(r->text(8), ec);
  if (ec) customFields = json::array{};
  json::array agents;
  for (auto a : commentingAgents(id)) agents.emplace_back(a);
  auto nullable = [&](std::size_t i) -> json::value {
    return r->isNull(i) ? json::value(nullptr) : json::value(r->text(i));
  };
  json::object out{
      {"id", r->integer(0)},
      {"url", base_ + "/api/mobile/requests/" + std::to_string(id) + ".json"},
      {"subject", r->text(3)},
      {"description", r->text(4)},
      {"status", r->text(2)},
      {"priority", nullable(6)},
      {"type", nullable(5)},
      {"requester_id", r->integer(1)},
      {"organization_id", nullptr},
      {"collaborator_ids", json::array{}},
      {"ticket_form_id", r->isNull(7) ? json::value(nullptr) : json::value(r->integer(7))},
      {"custom_fields", std::move(customFields)},
      {"can_be_solved_by_me", false},
      {"created_at", r->text(9)},
      {"updated_at", r->text(10)},
      {"public_updated_at", r->text(11)},
      {"comment_count", r->integer(12)},
      {"last_commenting_agents_ids", std::move(agents)}};
  if (include.count("first_comment") && !r->isNull(13))
    out["first_comment"] = commentJson(r->integer(13));
  if (include.count("last_comment") && !r->isNull(14))
    out["last_comment"] = commentJson(r->integer(14));
  return out;
}

std::optional<json::object> RequestStore::storedRequest(std::int64_t id) {
  auto r = db_.queryOne("SELECT tags, metadata FROM requests WHERE id = ?", {id});
  if (!r) return std::nullopt;
  auto out = requestJson(id, {"first_comment", "last_comment"});
  boost::system::error_code ec;
  out["tags"] = json::parse(r->text(0), ec);
  out["metadata"] = r->isNull(1) ? json::value(nullptr) : json::parse(r->text(1), ec);
  json::array comments;
  for (auto c : commentIds(id, {})) comments.push_back(commentJson(c));
  out["comments"] = std::move(comments);
  return out;
}

}  // namespace qvk::emulator
