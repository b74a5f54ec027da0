#include "emulator/ticket_form_routes.h"

#include <algorithm>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"
#include "emulator/identity_store.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

json::value parse(const std::string& text) {
  boost::system::error_code ec;
  auto v = json::parse(text, ec);
  return ec ? json::value(nullptr) : v;
}

// The service answers show_many for at most this many ids: later ones are
// ignored, and an id named twice is answered once.
constexpr std::size_t kMaxIds = 100;

std::vector<std::int64_t> wantedIds(const Request& req) {
  auto ids = http::parseIds(http::param(req, "ids"));
  if (ids.size() > kMaxIds) ids.resize(kMaxIds);
  std::vector<std::int64_t> out;
  for (auto id : ids)
    if (std::find(out.begin(), out.end(), id) == out.end()) out.push_back(id);
  return out;
}

void showMany(EmulatorContext& ctx, const Request& req, Response& res) {
  if (!ctx.identities.authenticate(req)) return http::sendUnauthorized(res);
  if (!req.has_param("ids"))
    return http::sendError(res, 400, "InvalidParameter", "ids is required");
  bool activeOnly = http::param(req, "active") == "true";
  auto includes = http::splitList(http::param(req, "include"));
  bool withFields = std::find(includes.begin(), includes.end(), "ticket_fields") != includes.end();
  json::array forms;
  std::vector<std::int64_t> fieldIds;
  auto base = http::baseUrl(req);
  for (auto id : wantedIds(req)) {
    auto r = ctx.db.queryOne(
        "SELECT id, name, display_name, position, active, field_ids FROM ticket_forms WHERE id = ?",
        {id});
    if (!r || (activeOnly && r->integer(4) == 0)) continue;
    auto ids = parse(r->text(5));
    for (const auto& f : ids.as_array()) fieldIds.push_back(f.as_int64());
    forms.push_back(
        json::object{{"id", r->integer(0)},
                     {"url", base + "/api/v2/ticket_forms/" + std::to_string(id) + ".json"},
                     {"name", r->text(1)},
                     {"raw_name", r->text(1)},
                     {"display_name", r->text(2)},
                     {"raw_display_name", r->text(2)},
                     {"end_user_visible", true},
                     {"position", r->integer(3)},
                     {"ticket_field_ids", ids},
                     {"active", r->integer(4) != 0},
                     {"default", r->integer(3) == 1},
                     {"in_all_brands", true}});
  }
  json::object answer{{"ticket_forms", std::move(forms)}};
  if (withFields) {
    json::array fields;
    std::sort(fieldIds.begin(), fieldIds.end());
    fieldIds.erase(std::unique(fieldIds.begin(), fieldIds.end()), fieldIds.end());
    for (auto id : fieldIds)
      if (auto r = ctx.db.queryOne("SELECT document FROM ticket_fields WHERE id = ?", {id})) {
        auto field = parse(r->text(0));
        // Stored with a path; answered with this server's absolute URL.
        if (auto* url = field.is_object() ? field.as_object().if_contains("url") : nullptr;
            url && url->is_string())
          *url = base + std::string(url->as_string());
        fields.push_back(std::move(field));
      }
    answer["ticket_fields"] = std::move(fields);
  }
  http::sendJson(res, 200, answer);
}

}  // namespace

void TicketFormRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  server.Get(R"(/api/v2/ticket_forms/show_many\.json)",
             [&ctx](const Request& req, Response& res) { showMany(ctx, req, res); });
}

}  // namespace qvk::emulator
