#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace qvk::emulator {

class Database;

// What a new request carries, already checked by the route.
struct NewRequest {
  std::int64_t requesterId = 0;
  std::string subject;
  std::string description;
  std::vector<std::string> tags;
  boost::json::array customFields;
  std::optional<std::int64_t> ticketFormId;
  boost::json::value metadata;  // null when none was sent
  std::vector<std::string> uploads;
};

// How a request list is sorted: by "updated_at" or "created_at", the id
// breaking ties the same way.
struct RequestOrder {
  std::string column = "updated_at";
  bool descending = true;
};

// Which comments a listing wants.
struct CommentFilter {
  std::string since;  // "" for all; else comments created at or after it
  bool agentsOnly = false;
  bool newestFirst = false;
};

// Support requests and their comments, and the records the end-user API
// answers for them.
class RequestStore {
 public:
  RequestStore(Database& db, std::string base) : db_(db), base_(std::move(base)) {}

  // Creates the request and its first comment; answers the request id and
  // the id of that comment in `commentId`.
  std::int64_t create(const NewRequest& request, std::int64_t& commentId);
  // Adds a comment and moves the status the way a reply does: an end user's
  // reply reopens a solved request, an agent's makes it pending unless a
  // status is given. Answers the comment id.
  std::int64_t addComment(std::int64_t requestId, std::int64_t authorId, const std::string& body,
                          const std::vector<std::string>& uploads,
                          const std::string& newStatus = {});

  std::optional<std::int64_t> requesterOf(std::int64_t requestId);
  std::string statusOf(std::int64_t requestId);
  // The user's requests (or those with the given ids) in the given statuses
  // (all when empty), in the given order.
  std::vector<std::int64_t> requestsOf(std::int64_t userId, const std::set<std::string>& statuses,
                                       const RequestOrder& order);
  std::vector<std::int64_t> requestsWithIds(const std::vector<std::int64_t>& ids,
                                            const std::set<std::string>& statuses,
                                            const RequestOrder& order);

  // The request record; `include` names the side-loads of the include
  // parameter ("last_comment", "first_comment").
  boost::json::object requestJson(std::int64_t id, const std::set<std::string>& include);
  boost::json::object commentJson(std::int64_t commentId);
  std::vector<std::int64_t> commentIds(std::int64_t requestId, const CommentFilter& filter);
  std::vector<std::int64_t> commentingAgents(std::int64_t requestId);
  std::vector<std::int64_t> commentAuthors(const std::vector<std::int64_t>& commentIds);
  // Everything stored, tags and metadata included (for the scenario controls).
  std::optional<boost::json::object> storedRequest(std::int64_t id);

 private:
  std::int64_t insertComment(std::int64_t requestId, std::int64_t authorId, const std::string& body,
                             const std::string& at);

  Database& db_;
  std::string base_;
};

// <p> paragraphs with line breaks, the text HTML-escaped.
std::string htmlFromPlainText(const std::string& text);

}  // namespace qvk::emulator
