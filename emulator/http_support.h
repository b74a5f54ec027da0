#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <httplib.h>

// Small helpers shared by the route handlers: JSON answers and errors in the
// service's shape, query and body reading, times and ids.
namespace qvk::emulator::http {

void sendJson(httplib::Response& res, int status, const boost::json::value& body);
// {"error": error, "description": description}
void sendError(httplib::Response& res, int status, std::string_view error,
               std::string_view description);
void sendNotFound(httplib::Response& res);
void sendUnauthorized(httplib::Response& res);
// 422 with the service's validation error shape and one detail line.
void sendInvalid(httplib::Response& res, std::string_view detail);

// The body as a JSON object, or nothing when it is empty or not an object.
std::optional<boost::json::object> jsonBody(const httplib::Request& req);

// The query parameter (already percent-decoded), "" when absent.
std::string param(const httplib::Request& req, const std::string& name);
// Comma-separated values; empty items are dropped.
std::vector<std::string> splitList(std::string_view text, char separator = ',');
std::optional<std::int64_t> parseId(std::string_view text);
std::vector<std::int64_t> parseIds(std::string_view text);

// "http://host:port" as the client addressed us, for absolute URLs in answers.
std::string baseUrl(const httplib::Request& req);
std::string percentEncode(std::string_view text);

// Times as the service writes them: "2026-03-01T10:20:30Z".
std::string isoTime(std::time_t t);
std::string nowIso();

std::string randomToken(std::size_t length);
std::string lower(std::string_view text);
// Article and comment bodies without markup, for search and plain bodies.
std::string stripTags(std::string_view html);
// The common named and numeric entities as plain text, for search matching.
std::string decodeEntities(std::string_view text);

}  // namespace qvk::emulator::http
