#include "emulator/http_support.h"

#include <algorithm>
#include <charconv>
#include <random>

#include <boost/json.hpp>

namespace qvk::emulator::http {

namespace json = boost::json;

void sendJson(httplib::Response& res, int status, const json::value& body) {
  res.status = status;
  res.set_content(json::serialize(body), "application/json; charset=utf-8");
}

void sendError(httplib::Response& res, int status, std::string_view error,
               std::string_view description) {
  sendJson(res, status, json::object{{"error", error}, {"description", description}});
}

void sendNotFound(httplib::Response& res) {
  sendError(res, 404, "RecordNotFound", "Not found");
}

void sendUnauthorized(httplib::Response& res) {
  sendError(res, 401, "Unauthorized", "Couldn't authenticate you");
}

void sendInvalid(httplib::Response& res, std::string_view detail) {
  json::object body{
      {"error", "RecordInvalid"},
      {"description", "Record validation errors"},
      {"details", json::object{{"base", json::array{json::object{{"description", detail}}}}}}};
  sendJson(res, 422, body);
}

std::optional<json::object> jsonBody(const httplib::Request& req) {
  if (req.body.empty()) return std::nullopt;
  boost::system::error_code ec;
  json::value v = json::parse(req.body, ec);
  if (ec || !v.is_object()) return std::nullopt;
  return std::move(v.as_object());
}

std::string param(const httplib::Request& req, const std::string& name) {
  return req.has_param(name.c_str()) ? req.get_param_value(name.c_str()) : std::string();
}

std::vector<std::string> splitList(std::string_view text, char separator) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find(separator, start);
    if (end == std::string_view::npos) end = text.size();
    if (end > start) out.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

std::optional<std::int64_t> parseId(std::string_view text) {
  std::int64_t value = 0;
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || ptr != text.data() + text.size()) return std::nullopt;
  return value;
}

std::vector<std::int64_t> parseIds(std::string_view text) {
  std::vector<std::int64_t> out;
  for (const auto& item : splitList(text))
    if (auto id = parseId(item)) out.push_back(*id);
  return out;
}

std::string baseUrl(const httplib::Request& req) {
  std::string host = req.get_header_value("Host");
  if (host.empty()) host = "127.0.0.1";
  return "http://" + host;
}

std::string percentEncode(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : text) {
    if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~') {
      out.push_back(static_cast<char>(c));
    } else {
      out.push_back('%');
      out.push_back(kHex[c >> 4]);
      out.push_back(kHex[c & 15]);
    }
  }
  return out;
}

std::string isoTime(std::time_t t) {
  std::tm tm{};
  gmtime_r(&t, &tm);
  char buffer[32];
  std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%SZ", &tm);
  return buffer;
}

std::string nowIso() {
  return isoTime(std::time(nullptr));
}

std::string randomToken(std::size_t length) {
  static constexpr char kAlphabet[] =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  thread_local std::mt19937_64 engine{std::random_device{}()};
  std::uniform_int_distribution<std::size_t> pick(0, sizeof kAlphabet - 2);
  std::string out(length, 'x');
  for (auto& c : out) c = kAlphabet[pick(engine)];
  return out;
}

std::string lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

std::string stripTags(std::string_view html) {
  std::string out;
  bool inTag = false;
  auto space = [&] {
    if (!out.empty() && out.back() != ' ') out.push_back(' ');
  };
  for (char c : html) {
    if (c == '<') {
      inTag = true;
      space();
    } else if (c == '>') {
      inTag = false;
    } else if (inTag) {
      continue;
    } else if (std::isspace(static_cast<unsigned char>(c))) {
      space();
    } else {
      out.push_back(c);
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

std::string decodeEntities(std::string_view text) {
  static constexpr std::pair<std::string_view, std::string_view> kEntities[] = {
      {"&amp;", "&"}, {"&lt;", "<"},   {"&gt;", ">"},    {"&quot;", "\""},
      {"&#39;", "'"}, {"&nbsp;", " "}, {"&ndash;", "-"}, {"&mdash;", "-"}};
  std::string out;
  for (std::size_t i = 0; i < text.size();) {
    bool replaced = false;
    if (text[i] == '&') {
      for (const auto& [entity, plain] : kEntities) {
        if (text.substr(i, entity.size()) == entity) {
          out += plain;
          i += entity.size();
          replaced = true;
          break;
        }
      }
    }
    if (!replaced) out.push_back(text[i++]);
  }
  return out;
}

}  // namespace qvk::emulator::http
