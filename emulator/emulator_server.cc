#include "emulator/emulator_server.h"

#include <chrono>
#include <cstdio>

#include <boost/json.hpp>

#include "emulator/control_routes.h"
#include "emulator/core_routes.h"
#include "emulator/database.h"
#include "emulator/emulator_context.h"
#include "emulator/fault_injector.h"
#include "emulator/help_center_routes.h"
#include "emulator/http_support.h"
#include "emulator/identity_store.h"
#include "emulator/request_routes.h"
#include "emulator/sample_data.h"
#include "emulator/schema.h"
#include "emulator/settings_state.h"
#include "emulator/ticket_form_routes.h"
#include "emulator/tuned_http_server.h"
#include "emulator/upload_routes.h"

namespace qvk::emulator {

namespace json = boost::json;
using httplib::Request;
using httplib::Response;
using HandlerResponse = httplib::Server::HandlerResponse;

namespace {

bool startsWith(const std::string& s, std::string_view prefix) {
  return s.compare(0, prefix.size(), prefix) == 0;
}

bool isControlPath(const std::string& path) {
  return startsWith(path, "/_emulator/");
}

bool isHelpCenterPath(const std::string& path) {
  return startsWith(path, "/api/v2/help_center/") || startsWith(path, "/api/mobile/help_center/") ||
         startsWith(path, "/hc/api/");
}

bool isVotePath(const std::string& path) {
  return startsWith(path, "/api/v2/help_center/votes/") ||
         (startsWith(path, "/api/v2/help_center/articles/") &&
          (path.ends_with("/up.json") || path.ends_with("/down.json")));
}

std::string entityTag(const std::string& body) {
  std::uint64_t hash = 14695981039346656037ull;  // FNV-1a
  for (unsigned char c : body) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "\"%016llx\"", static_cast<unsigned long long>(hash));
  return buffer;
}

bool tagMatches(const std::string& ifNoneMatch, const std::string& tag) {
  for (auto item : http::splitList(ifNoneMatch)) {
    while (!item.empty() && item.front() == ' ') item.erase(0, 1);
    if (startsWith(item, "W/")) item.erase(0, 2);
    if (item == tag || item == "*") return true;
  }
  return false;
}

// A JSON array of kOversizeBytes, written in chunks on the connection's
// worker thread as the client reads: no copy of it is ever held, and a client
// that gives up early ends the stream at its next write.
void streamOversizeBody(Response& res) {
  static const std::string chunk = [] {
    std::string text;
    while (text.size() < 64 * 1024) text += "0,";
    return text;
  }();
  res.set_chunked_content_provider("application/json",
                                   [](std::size_t offset, httplib::DataSink& sink) {
                                     if (offset == 0) return sink.write("[", 1);
                                     if (offset > kOversizeBytes) {
                                       const bool written = sink.write("0]", 2);
                                       sink.done();
                                       return written;
                                     }
                                     return sink.write(chunk.data(), chunk.size());
                                   });
}

// Headers promise one byte that never comes, and the connection closes.
void dropConnection(Response& res) {
  res.body.clear();
  res.set_content_provider(1, "application/json",
                           [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
}

// Set by a "drop_after" fault for the request this worker thread handles
// now, and used up when its answer is about to go.
thread_local bool dropAnswer = false;

// Applies a scripted fault; answers whether it replaced the real answer.
bool applyFault(const Fault& fault, Response& res) {
  if (fault.delayMs > 0) std::this_thread::sleep_for(std::chrono::milliseconds(fault.delayMs));
  if (fault.drop) {
    dropConnection(res);
    return true;
  }
  if (fault.malformed) {
    res.status = fault.status ? fault.status : 200;
    res.set_content(R"({"results": [{"id": 1, "title": "cut off)", "application/json");
    return true;
  }
  if (fault.oversize) {
    streamOversizeBody(res);
    return true;
  }
  if (fault.status) {
    http::sendError(res, fault.status, "InjectedFault",
                    "Answer scripted through /_emulator/faults");
    return true;
  }
  return false;
}

}  // namespace

EmulatorServer::EmulatorServer(EmulatorOptions options) : options_(std::move(options)) {}

EmulatorServer::~EmulatorServer() {
  stop();
}

std::string EmulatorServer::baseUrl() const {
  return "http://" + options_.host + ":" + std::to_string(port_);
}

bool EmulatorServer::start(std::string& error) {
  try {
    db_ = std::make_unique<Database>(options_.dbPath);
    createSchema(*db_);
    SampleData::seed(*db_, options_.seed == "sample");
  } catch (const DatabaseError& e) {
    error = e.what();
    return false;
  }
  identities_ = std::make_unique<IdentityStore>(*db_);
  settings_ = std::make_unique<SettingsState>(options_);
  faults_ = std::make_unique<FaultInjector>();
  context_ = std::make_unique<EmulatorContext>(
      EmulatorContext{options_, *db_, *identities_, *settings_, *faults_});
  http_ = std::make_unique<TunedHttpServer>(options_.threads);
  installHandlers();
  port_ = http_->bindWithBacklog(options_.host, options_.port);
  if (port_ < 0) {
    error = "cannot listen on " + options_.host + ":" + std::to_string(options_.port);
    return false;
  }
  thread_ = std::thread([this] { http_->listen_after_bind(); });
  // stop() before the accept loop runs would be lost and leave the thread
  // serving, so start() returns only once the loop is up (bounded wait).
  for (int i = 0; i < 5000 && !http_->is_running(); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return true;
}

void EmulatorServer::stop() {
  if (http_) http_->stop();
  if (thread_.joinable()) thread_.join();
}

void EmulatorServer::installHandlers() {
  auto& server = *http_;
  auto& ctx = *context_;
  server.set_pre_routing_handler([this](const Request& req, Response& res) {
    if (isControlPath(req.path)) return HandlerResponse::Unhandled;
    if (options_.latencyMs > 0)
      std::this_thread::sleep_for(std::chrono::milliseconds(options_.latencyMs));
    if (auto fault = faults_->take(req.path)) {
      if (applyFault(*fault, res)) return HandlerResponse::Handled;
      dropAnswer = fault->dropAfter;
    }
    if (settings_->helpCenterRestricted() && isHelpCenterPath(req.path) && !isVotePath(req.path)) {
      auto user = identities_->authenticate(req);
      if (!user || !user->jwt) {
        http::sendUnauthorized(res);
        return HandlerResponse::Handled;
      }
    }
    return HandlerResponse::Unhandled;
  });
  server.set_post_routing_handler([this](const Request& req, Response& res) {
    if (dropAnswer) {
      dropAnswer = false;
      dropConnection(res);
      return;
    }
    if (req.method != "GET" || res.status != 200 || res.body.empty()) return;
    if (isHelpCenterPath(req.path))
      res.set_header("X-QV-Cache-Control",
                     "must-revalidate, max-age=" + std::to_string(options_.helpCenterMaxAge));
    auto tag = entityTag(res.body);
    res.set_header("ETag", tag);
    if (tagMatches(req.get_header_value("If-None-Match"), tag)) {
      // The length header was already worked out for the body; a 304 has none.
      res.status = 304;
      res.body.clear();
      res.headers.erase("Content-Type");
      res.headers.erase("Content-Length");
      // Some clients read a body up to the close without it.
      res.set_header("Content-Length", "0");
    }
  });
  server.set_error_handler(httplib::Server::HandlerWithResponse([](const Request&, Response& res) {
    if (!res.body.empty()) return HandlerResponse::Unhandled;
    if (res.status == 404) {
      http::sendError(res, 404, "InvalidEndpoint", "Not found");
    } else {
      http::sendError(res, res.status, res.status >= 500 ? "InternalError" : "InvalidRequest",
                      res.status >= 500 ? "Server error" : "Bad request");
    }
    return HandlerResponse::Handled;
  }));
  server.set_exception_handler([](const Request&, Response& res, std::exception_ptr ep) {
    std::string what = "unknown error";
    try {
      if (ep) std::rethrow_exception(ep);
    } catch (const std::exception& e) {
      what = e.what();
    } catch (...) {
    }
    http::sendError(res, 500, "InternalError", what);
  });
  if (!options_.quiet) {
    server.set_logger([](const Request& req, const Response& res) {
      std::fprintf(stderr, "%s %s %d\n", req.method.c_str(), req.target.c_str(), res.status);
    });
  }
  CoreRoutes::install(server, ctx);
  HelpCenterRoutes::install(server, ctx);
  RequestRoutes::install(server, ctx);
  UploadRoutes::install(server, ctx);
  TicketFormRoutes::install(server, ctx);
  ControlRoutes::install(server, ctx);
}

}  // namespace qvk::emulator
