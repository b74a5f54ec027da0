#include "emulator/core_routes.h"

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"
#include "emulator/identity_store.h"
#include "emulator/settings_state.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

const json::object* identityOf(const std::optional<json::object>& body) {
  if (!body) return nullptr;
  const auto* identity = body->if_contains("identity");
  return identity && identity->is_object() ? &identity->as_object() : nullptr;
}

void anonymousToken(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  const auto* identity = identityOf(body);
  if (!identity) return http::sendInvalid(res, "Identity: is missing");
  std::string error;
  auto token = ctx.identities.exchangeAnonymous(*identity, error);
  if (!token) return http::sendInvalid(res, error);
  http::sendJson(res, 201, json::object{{"access_token", *token}});
}

void jwtToken(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  const auto* identity = identityOf(body);
  const auto* jwt = identity ? identity->if_contains("jwt") : nullptr;
  if (!jwt || !jwt->is_string()) return http::sendInvalid(res, "Identity: jwt is missing");
  std::string error;
  auto token = ctx.identities.exchangeJwt(std::string(jwt->as_string()), error);
  if (!token) return http::sendError(res, 401, "InvalidJWT", error);
  http::sendJson(res, 201, json::object{{"access_token", *token}});
}

void settings(EmulatorContext& ctx, const Request&, Response& res) {
  http::sendJson(res, 200, ctx.settings.document());
}

// The id a client may give a blip so that a repeat can be told apart: a
// non-empty string, or absent.
bool validBlipId(const json::object& blip) {
  const auto* id = blip.if_contains("blip_id");
  return !id || (id->is_string() && !id->as_string().empty());
}

// Keeps a blip unless its id was accepted before; answers whether it was
// kept. A client sends a batch again when it lost the answer to the first
// send, so a repeat is expected and only counted.
bool acceptBlip(EmulatorContext& ctx, const json::object& blip, const std::string& now) {
  if (const auto* id = blip.if_contains("blip_id")) {
    const std::string key(id->as_string());
    if (ctx.db.execute("INSERT OR IGNORE INTO blip_ids (blip_id) VALUES (?)", {key}) == 0) {
      ctx.db.execute("UPDATE blip_ids SET repeats = repeats + 1 WHERE blip_id = ?", {key});
      return false;
    }
  }
  ctx.db.execute("INSERT INTO blips (blip, received_at) VALUES (?, ?)",
                 {json::serialize(blip), now});
  return true;
}

// Each blip is kept exactly as it arrived; the scenario controls list them.
void blips(EmulatorContext& ctx, const Request& req, Response& res) {
  auto body = http::jsonBody(req);
  const auto* list = body ? body->if_contains("blips") : nullptr;
  if (!list || !list->is_array()) return http::sendInvalid(res, "Blips: must be a list");
  for (const auto& b : list->as_array()) {
    if (!b.is_object()) return http::sendInvalid(res, "Blips: each must be an object");
    if (!validBlipId(b.as_object()))
      return http::sendInvalid(res, "Blips: blip_id must be a non-empty string");
  }
  auto guard = ctx.db.lock();
  const auto now = http::nowIso();
  std::int64_t accepted = 0;
  for (const auto& b : list->as_array()) accepted += acceptBlip(ctx, b.as_object(), now) ? 1 : 0;
  const auto repeated = static_cast<std::int64_t>(list->as_array().size()) - accepted;
  http::sendJson(res, 202, json::object{{"accepted", accepted}, {"repeated", repeated}});
}

}  // namespace

void CoreRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  auto route = [&ctx](void (*handler)(EmulatorContext&, const Request&, Response&)) {
    return [&ctx, handler](const Request& req, Response& res) { handler(ctx, req, res); };
  };
  server.Post(R"(/api/mobile/sdk/access/anonymous\.json)", route(anonymousToken));
  server.Post(R"(/api/mobile/sdk/access/jwt\.json)", route(jwtToken));
  server.Get(R"(/api/mobile/sdk/settings/[^/]+\.json)", route(settings));
  server.Post(R"(/api/mobile/sdk/blips\.json)", route(blips));
}

}  // namespace qvk::emulator
