#include "emulator/request_routes.h"

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"
#include "emulator/identity_store.h"
#include "emulator/request_store.h"
#include "emulator/upload_store.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

std::set<std::string> includeSet(const Request& req) {
  auto items = http::splitList(http::param(req, "include"));
  return {items.begin(), items.end()};
}

std::set<std::string> statusSet(const Request& req) {
  auto items = http::splitList(http::param(req, "status"));
  return {items.begin(), items.end()};
}

// sort_by "created_at" or "updated_at" (the default), sort_order "asc" or
// "desc" (the default).
RequestOrder requestOrder(const Request& req) {
  RequestOrder order;
  if (http::param(req, "sort_by") == "created_at") order.column = "created_at";
  order.descending = http::param(req, "sort_order") != "asc";
  return order;
}

// Reads an optional array of strings; false when it is there but is not one.
bool stringList(const json::object& o, const char* key, std::vector<std::string>& out) {
  const auto* v = o.if_contains(key);
  if (!v || v->is_null()) return true;
  if (!v->is_array()) return false;
  for (const auto& item : v->as_array()) {
    if (!item.is_string()) return false;
    out.emplace_back(item.as_string());
  }
  return true;
}

// Checks the "request" object of a create call and fills `out`; answers an
// error text for a 422, or "".
std::string readNewRequest(EmulatorContext& ctx, const json::object& body, NewRequest& out) {
  const auto* request = body.if_contains("request");
  if (!request || !request->is_object()) return "Request: is missing";
  const auto& r = request->as_object();
  const auto* comment = r.if_contains("comment");
  if (!comment || !comment->is_object()) return "Comment: is missing";
  const auto* text = comment->as_object().if_contains("body");
  if (!text || !text->is_string() || text->as_string().empty())
    return "Description: cannot be blank";
  out.description = std::string(text->as_string());
  if (!stringList(comment->as_object(), "uploads", out.uploads))
    return "Uploads: must be a list of tokens";
  if (const auto* s = r.if_contains("subject"); s && !s->is_null()) {
    if (!s->is_string()) return "Subject: must be text";
    out.subject = std::string(s->as_string());
  }
  // Like the service, an empty subject is taken from the description.
  if (out.subject.empty())
    out.subject = out.description.substr(0, out.description.find('\n')).substr(0, 80);
  if (!stringList(r, "tags", out.tags)) return "Tags: must be a list of strings";
  if (const auto* f = r.if_contains("custom_fields"); f && !f->is_null()) {
    if (!f->is_array()) return "Custom fields: must be a list";
    for (const auto& field : f->as_array()) {
      if (!field.is_object() || !field.as_object().contains("id") ||
          !field.as_object().at("id").is_int64())
        return "Custom fields: each needs a numeric id";
      out.customFields.push_back(field);
    }
  }
  if (const auto* t = r.if_contains("ticket_form_id"); t && !t->is_null()) {
    if (!t->is_int64()) return "Ticket form: must be a number";
    if (!ctx.db.queryOne("SELECT 1 FROM ticket_forms WHERE id = ?", {t->as_int64()}))
      return "Ticket form: is invalid";
    out.ticketFormId = t->as_int64();
  }
  if (const auto* m = r.if_contains("metadata"); m && !m->is_null()) {
    if (!m->is_object()) return "Metadata: must be an object";
    out.metadata = *m;
  }
  return {};
}

void createRequest(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  auto body = http::jsonBody(req);
  if (!body) return http::sendError(res, 400, "InvalidJson", "The body is not a JSON object");
  NewRequest request;
  if (auto error = readNewRequest(ctx, *body, request); !error.empty())
    return http::sendInvalid(res, error);
  UploadStore uploads(ctx.db, http::baseUrl(req));
  auto guard = ctx.db.lock();
  if (auto error = uploads.checkTokens(request.uploads, user->id); !error.empty())
    return http::sendInvalid(res, error);
  // An anonymous request belongs to the identity the client names.
  auto guid = req.get_header_value("Mobile-Sdk-Identity");
  request.requesterId =
      guid.empty() || user->jwt ? user->id : ctx.identities.userForGuid(guid, user->name, "");
  RequestStore store(ctx.db, http::baseUrl(req));
  std::int64_t commentId = 0;
  auto id = store.create(request, commentId);
  // An included comment rides at the top level here, not inside "request" as
  // it does in the answer to a reply.
  auto include = includeSet(req);
  bool withComment = include.erase("last_comment") > 0;
  json::object answer{{"request", store.requestJson(id, include)}};
  if (withComment) answer["last_comment"] = store.commentJson(commentId);
  http::sendJson(res, 201, answer);
}

void answerList(EmulatorContext& ctx, const Request& req, Response& res,
                const std::vector<std::int64_t>& ids) {
  RequestStore store(ctx.db, http::baseUrl(req));
  auto include = includeSet(req);
  json::array requests;
  std::vector<std::int64_t> agents;
  for (auto id : ids) {
    requests.push_back(store.requestJson(id, include));
    for (auto a : store.commentingAgents(id)) agents.push_back(a);
  }
  json::object answer{{"requests", std::move(requests)}};
  if (include.count("last_commenting_agents"))
    answer["last_commenting_agents"] = ctx.identities.usersJson(agents, http::baseUrl(req));
  answer["next_page"] = nullptr;
  answer["previous_page"] = nullptr;
  answer["count"] = static_cast<std::int64_t>(ids.size());
  http::sendJson(res, 200, answer);
}

// An anonymous client that names its identity lists that identity's
// requests, the ones its creates made.
void listRequests(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  const auto guid = req.get_header_value("Mobile-Sdk-Identity");
  std::vector<std::int64_t> ids;
  {
    auto guard = ctx.db.lock();
    const auto owner =
        guid.empty() || user->jwt ? user->id : ctx.identities.userForGuid(guid, user->name, "");
    ids = RequestStore(ctx.db, http::baseUrl(req))
              .requestsOf(owner, statusSet(req), requestOrder(req));
  }
  answerList(ctx, req, res, ids);
}

void showMany(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  if (!req.has_param("tokens"))
    return http::sendError(res, 400, "InvalidParameter", "tokens is required");
  RequestStore store(ctx.db, http::baseUrl(req));
  answerList(ctx, req, res,
             store.requestsWithIds(http::parseIds(http::param(req, "tokens")), statusSet(req),
                                   requestOrder(req)));
}

// The id of the path's request when the signed-in user may see it; answers
// 401 or 404 itself otherwise.
std::optional<std::int64_t> ownRequest(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) {
    http::sendUnauthorized(res);
    return std::nullopt;
  }
  auto id = http::parseId(req.matches[1].str()).value_or(-1);
  auto requester = RequestStore(ctx.db, http::baseUrl(req)).requesterOf(id);
  if (!requester || *requester != user->id) {
    http::sendNotFound(res);
    return std::nullopt;
  }
  return id;
}

void showRequest(EmulatorContext& ctx, const Request& req, Response& res) {
  auto id = ownRequest(ctx, req, res);
  if (!id) return;
  RequestStore store(ctx.db, http::baseUrl(req));
  http::sendJson(res, 200, json::object{{"request", store.requestJson(*id, includeSet(req))}});
}

void listComments(EmulatorContext& ctx, const Request& req, Response& res) {
  auto id = ownRequest(ctx, req, res);
  if (!id) return;
  RequestStore store(ctx.db, http::baseUrl(req));
  CommentFilter filter{http::param(req, "since"), http::param(req, "role") == "agent",
                       http::param(req, "sort_order") == "desc"};
  auto ids = store.commentIds(*id, filter);
  json::array comments;
  for (auto c : ids) comments.push_back(store.commentJson(c));
  http::sendJson(res, 200,
                 json::object{{"comments", std::move(comments)},
                              {"users", ctx.identities.usersJson(store.commentAuthors(ids),
                                                                 http::baseUrl(req))},
                              {"organizations", json::array{}},
                              {"next_page", nullptr},
                              {"previous_page", nullptr},
                              {"count", static_cast<std::int64_t>(ids.size())}});
}

void addComment(EmulatorContext& ctx, const Request& req, Response& res) {
  auto id = ownRequest(ctx, req, res);
  if (!id) return;
  auto user = ctx.identities.authenticate(req);
  auto body = http::jsonBody(req);
  if (!body) return http::sendError(res, 400, "InvalidJson", "The body is not a JSON object");
  const auto* request = body->if_contains("request");
  const json::value* comment =
      request && request->is_object() ? request->as_object().if_contains("comment") : nullptr;
  const json::value* value =
      comment && comment->is_object() ? comment->as_object().if_contains("value") : nullptr;
  if (!value || !value->is_string() || value->as_string().empty())
    return http::sendInvalid(res, "Comment: value cannot be blank");
  std::vector<std::string> tokens;
  if (!stringList(comment->as_object(), "uploads", tokens))
    return http::sendInvalid(res, "Uploads: must be a list of tokens");
  RequestStore store(ctx.db, http::baseUrl(req));
  auto guard = ctx.db.lock();
  if (store.statusOf(*id) == "closed")
    return http::sendInvalid(res, "Status: closed prevents ticket update");
  if (auto error = UploadStore(ctx.db, http::baseUrl(req)).checkTokens(tokens, user->id);
      !error.empty())
    return http::sendInvalid(res, error);
  store.addComment(*id, user->id, std::string(value->as_string()), tokens);
  http::sendJson(res, 200, json::object{{"request", store.requestJson(*id, includeSet(req))}});
}

}  // namespace

void RequestRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  auto route = [&ctx](void (*handler)(EmulatorContext&, const Request&, Response&)) {
    return [&ctx, handler](const Request& req, Response& res) { handler(ctx, req, res); };
  };
  server.Post(R"(/api/mobile/requests\.json)", route(createRequest));
  server.Get(R"(/api/mobile/requests\.json)", route(listRequests));
  server.Get(R"(/api/mobile/requests/show_many\.json)", route(showMany));
  server.Get(R"(/api/mobile/requests/(\d+)\.json)", route(showRequest));
  server.Put(R"(/api/mobile/requests/(\d+)\.json)", route(addComment));
  server.Get(R"(/api/mobile/requests/(\d+)/comments\.json)", route(listComments));
}

}  // namespace qvk::emulator
