#include "emulator/control_routes.h"

#include <set>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/demo_identity.h"
#include "emulator/fault_injector.h"
#include "emulator/http_support.h"
#include "emulator/request_store.h"
#include "emulator/settings_state.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

json::value parseStored(const std::string& text) {
  boost::system::error_code ec;
  auto v = json::parse(text, ec);
  return ec ? json::value(text) : v;
}

void health(EmulatorContext&, const Request&, Response& res) {
  http::sendJson(res, 200, json::object{{"status", "ok"}});
}

void demoIdentity(EmulatorContext&, const Request&, Response& res) {
  http::sendJson(
      res, 200,
      json::object{{"jwt", kDemoJwt}, {"name", kDemoUserName}, {"email", kDemoUserEmail}});
}

void showSettings(EmulatorContext& ctx, const Request&, Response& res) {
  http::sendJson(res, 200, ctx.settings.toggles());
}

void changeSettings(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  if (!body) return http::sendError(res, 400, "InvalidJson", "The body is not a JSON object");
  if (auto error = ctx.settings.apply(*body); !error.empty()) return http::sendInvalid(res, error);
  http::sendJson(res, 200, ctx.settings.toggles());
}

// The agent that a reply control names ("author_id"), else the first agent.
std::optional<std::int64_t> replyingAgent(EmulatorContext& ctx, const json::object& body) {
  std::optional<SqlRow> agent;
  if (const auto* a = body.if_contains("author_id"))
    agent = a->is_int64() ? ctx.db.queryOne("SELECT id FROM users WHERE id = ? AND agent = 1",
                                            {a->as_int64()})
                          : std::nullopt;
  else
    agent = ctx.db.queryOne("SELECT id FROM users WHERE agent = 1 ORDER BY id LIMIT 1");
  if (!agent) return std::nullopt;
  return agent->integer(0);
}

// The status a reply control sets: "" (the store decides) or a status word.
std::optional<std::string> replyStatus(const json::object& body) {
  static const std::set<std::string> kStatuses{"new",  "open",   "pending",
                                               "hold", "solved", "closed"};
  const auto* s = body.if_contains("status");
  if (!s) return std::string();
  if (!s->is_string() || !kStatuses.count(std::string(s->as_string()))) return std::nullopt;
  return std::string(s->as_string());
}

// An agent's reply to a request, so that a client sees a comment it has not
// read: {"body": text, "author_id": agent (the first agent when absent),
// "status": new status (pending when absent)}. Answers the comment and the
// request as the end user will now list it.
void agentComment(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  const auto* text = body ? body->if_contains("body") : nullptr;
  if (!text || !text->is_string() || text->as_string().empty())
    return http::sendInvalid(res, "body must be a non-empty string");
  auto status = replyStatus(*body);
  if (!status)
    return http::sendInvalid(res, "status must be new, open, pending, hold, solved or closed");
  auto guard = ctx.db.lock();
  auto requestId = http::parseId(req.matches[1].str()).value_or(-1);
  RequestStore store(ctx.db, http::baseUrl(req));
  if (!store.requesterOf(requestId)) return http::sendNotFound(res);
  auto agent = replyingAgent(ctx, *body);
  if (!agent) return http::sendInvalid(res, "author_id must name an agent");
  auto id = store.addComment(requestId, *agent, std::string(text->as_string()), {}, *status);
  http::sendJson(res, 201,
                 json::object{{"comment", store.commentJson(id)},
                              {"request", store.requestJson(requestId, {"last_comment"})}});
}

void storedRequest(EmulatorContext& ctx, const Request& req, Response& res) {
  RequestStore store(ctx.db, http::baseUrl(req));
  auto record = store.storedRequest(http::parseId(req.matches[1].str()).value_or(-1));
  if (!record) return http::sendNotFound(res);
  http::sendJson(res, 200, json::object{{"request", std::move(*record)}});
}

// The blips accepted, and how many sends of an already accepted blip id
// were dropped.
void listBlips(EmulatorContext& ctx, const Request&, Response& res) {
  auto guard = ctx.db.lock();
  json::array out;
  for (const auto& r : ctx.db.query("SELECT blip FROM blips ORDER BY id"))
    out.push_back(parseStored(r.text(0)));
  const auto repeats = ctx.db.queryOne("SELECT COALESCE(SUM(repeats), 0) FROM blip_ids");
  http::sendJson(res, 200,
                 json::object{{"blips", std::move(out)}, {"repeated", repeats->integer(0)}});
}

void clearBlips(EmulatorContext& ctx, const Request&, Response& res) {
  auto guard = ctx.db.lock();
  ctx.db.execute("DELETE FROM blips");
  ctx.db.execute("DELETE FROM blip_ids");
  res.status = 204;
}

void listViews(EmulatorContext& ctx, const Request&, Response& res) {
  json::array out;
  for (const auto& r : ctx.db.query(
           "SELECT article_id, locale, user_id, body, received_at FROM article_views ORDER BY id"))
    out.push_back(
        json::object{{"article_id", r.integer(0)},
                     {"locale", r.text(1)},
                     {"user_id", r.isNull(2) ? json::value(nullptr) : json::value(r.integer(2))},
                     {"body", r.isNull(3) ? json::value(nullptr) : parseStored(r.text(3))},
                     {"received_at", r.text(4)}});
  http::sendJson(res, 200, json::object{{"article_views", std::move(out)}});
}

void addFault(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  if (!body) return http::sendError(res, 400, "InvalidJson", "The body is not a JSON object");
  Fault fault;
  if (auto error = ctx.faults.add(*body, fault); !error.empty())
    return http::sendInvalid(res, error);
  http::sendJson(res, 201, json::object{{"fault", toJson(fault)}});
}

void listFaults(EmulatorContext& ctx, const Request&, Response& res) {
  http::sendJson(res, 200, json::object{{"faults", ctx.faults.list()}});
}

void resetFaults(EmulatorContext& ctx, const Request&, Response& res) {
  ctx.faults.reset();
  res.status = 204;
}

}  // namespace

void ControlRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  auto route = [&ctx](void (*handler)(EmulatorContext&, const Request&, Response&)) {
    return [&ctx, handler](const Request& req, Response& res) { handler(ctx, req, res); };
  };
  server.Get("/_emulator/health", route(health));
  server.Get("/_emulator/demo_identity", route(demoIdentity));
  server.Get("/_emulator/settings", route(showSettings));
  server.Put("/_emulator/settings", route(changeSettings));
  server.Post("/_emulator/settings", route(changeSettings));
  server.Post(R"(/_emulator/requests/(\d+)/comments)", route(agentComment));
  server.Get(R"(/_emulator/requests/(\d+))", route(storedRequest));
  server.Get("/_emulator/blips", route(listBlips));
  server.Delete("/_emulator/blips", route(clearBlips));
  server.Get("/_emulator/article_views", route(listViews));
  server.Get("/_emulator/faults", route(listFaults));
  server.Post("/_emulator/faults", route(addFault));
  server.Delete("/_emulator/faults", route(resetFaults));
}

}  // namespace qvk::emulator
