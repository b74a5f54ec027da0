#include "emulator/upload_routes.h"

#include <boost/json.hpp>

#include "emulator/http_support.h"
#include "emulator/identity_store.h"
#include "emulator/settings_state.h"
#include "emulator/upload_store.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;

namespace {

void upload(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  std::string fileName = http::param(req, "filename");
  if (fileName.empty()) return http::sendInvalid(res, "Filename: cannot be blank");
  if (req.body.empty()) return http::sendInvalid(res, "File: cannot be empty");
  if (static_cast<std::int64_t>(req.body.size()) > ctx.settings.maxAttachmentSize())
    return http::sendError(res, 413, "PayloadTooLarge", "The file is larger than allowed");
  std::string contentType = req.get_header_value("Content-Type");
  if (contentType.empty()) contentType = "application/octet-stream";
  UploadStore store(ctx.db, http::baseUrl(req));
  auto token = store.create(user->id, fileName, contentType, req.body);
  auto attachment = store.attachmentJson(token).value_or(json::object{});
  http::sendJson(
      res, 201,
      json::object{
          {"upload", json::object{{"token", token},
                                  {"expires_at", http::isoTime(std::time(nullptr) + 3 * 24 * 3600)},
                                  {"attachments", json::array{attachment}},
                                  {"attachment", attachment}}}});
}

void removeUpload(EmulatorContext& ctx, const Request& req, Response& res) {
  auto user = ctx.identities.authenticate(req);
  if (!user) return http::sendUnauthorized(res);
  if (!UploadStore(ctx.db, http::baseUrl(req)).remove(req.matches[1].str(), user->id))
    return http::sendNotFound(res);
  res.status = 204;
}

// Content URLs are unguessable, like the service's signed ones, so they are
// served without a token.
void download(EmulatorContext& ctx, const Request& req, Response& res) {
  auto content = UploadStore(ctx.db, http::baseUrl(req)).content(req.matches[1].str());
  if (!content) return http::sendNotFound(res);
  res.set_header("Content-Disposition", "attachment; filename=\"" + content->fileName + "\"");
  res.set_content(content->bytes, content->contentType.c_str());
}

}  // namespace

void UploadRoutes::install(httplib::Server& server, EmulatorContext& ctx) {
  server.Post(R"(/api/mobile/uploads\.json)",
              [&ctx](const Request& req, Response& res) { upload(ctx, req, res); });
  server.Delete(R"(/api/mobile/uploads/([A-Za-z0-9]+)\.json)",
                [&ctx](const Request& req, Response& res) { removeUpload(ctx, req, res); });
  server.Get(R"(/attachments/token/([A-Za-z0-9]+)/?)",
             [&ctx](const Request& req, Response& res) { download(ctx, req, res); });
}

}  // namespace qvk::emulator
