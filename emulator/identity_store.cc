#include "emulator/identity_store.h"

#include <algorithm>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"

namespace qvk::emulator {

namespace json = boost::json;

namespace {

std::optional<std::string> base64UrlDecode(std::string_view in) {
  auto sextet = [](char c) -> int {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '-' || c == '+') return 62;
    if (c == '_' || c == '/') return 63;
    return -1;
  };
  while (!in.empty() && in.back() == '=') in.remove_suffix(1);
  std::string out;
  unsigned buffer = 0;
  int bits = 0;
  for (char c : in) {
    int v = sextet(c);
    if (v < 0) return std::nullopt;
    buffer = (buffer << 6) | static_cast<unsigned>(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out.push_back(static_cast<char>((buffer >> bits) & 0xFF));
    }
  }
  return out;
}

std::string stringOr(const json::object& o, const char* key, std::string fallback = {}) {
  const auto* v = o.if_contains(key);
  return v && v->is_string() ? std::string(v->as_string()) : fallback;
}

}  // namespace

std::optional<json::object> IdentityStore::jwtPayload(const std::string& jwt) {
  auto parts = http::splitList(jwt, '.');
  if (parts.size() != 3 || std::count(jwt.begin(), jwt.end(), '.') != 2) return std::nullopt;
  auto decoded = base64UrlDecode(parts[1]);
  if (!decoded) return std::nullopt;
  boost::system::error_code ec;
  json::value v = json::parse(*decoded, ec);
  if (ec || !v.is_object()) return std::nullopt;
  return std::move(v.as_object());
}

std::string IdentityStore::issueToken(std::int64_t userId, const char* kind) {
  std::string token = http::randomToken(40);
  db_.execute("INSERT INTO access_tokens (token, user_id, kind, created_at) VALUES (?, ?, ?, ?)",
              {token, userId, std::string(kind), http::nowIso()});
  return token;
}

std::int64_t IdentityStore::userForGuid(const std::string& guid, const std::string& name,
                                        const std::string& email) {
  auto guard = db_.lock();
  if (auto row = db_.queryOne("SELECT id FROM users WHERE guid = ?", {guid}))
    return row->integer(0);
  // An anonymous identity may carry an email that another user has; the
  // guid identifies it, so the email is kept only when it is free.
  bool emailTaken = !email.empty() && db_.queryOne("SELECT id FROM users WHERE email = ?", {email});
  db_.execute(
      "INSERT INTO users (name, email, guid, agent, created_at) VALUES (?, ?, ?, 0, ?)",
      {name.empty() ? SqlValue(nullptr) : SqlValue(name),
       email.empty() || emailTaken ? SqlValue(nullptr) : SqlValue(email), guid, http::nowIso()});
  return db_.lastInsertId();
}

std::int64_t IdentityStore::userForEmail(const std::string& email, const std::string& name) {
  auto guard = db_.lock();
  if (auto row = db_.queryOne("SELECT id FROM users WHERE email = ?", {email}))
    return row->integer(0);
  db_.execute("INSERT INTO users (name, email, agent, created_at) VALUES (?, ?, 0, ?)",
              {name.empty() ? email : name, email, http::nowIso()});
  return db_.lastInsertId();
}

std::optional<std::string> IdentityStore::exchangeAnonymous(const json::object& identity,
                                                            std::string& error) {
  std::string guid = stringOr(identity, "guid");
  if (guid.empty()) {
    error = "Identity: guid is missing";
    return std::nullopt;
  }
  auto id = userForGuid(guid, stringOr(identity, "name"), stringOr(identity, "email"));
  return issueToken(id, "anonymous");
}

std::optional<std::string> IdentityStore::exchangeJwt(const std::string& jwt, std::string& error) {
  auto payload = jwtPayload(jwt);
  if (!payload) {
    error = "The JWT is not three base64url parts with a JSON object payload";
    return std::nullopt;
  }
  std::string email = stringOr(*payload, "email");
  if (email.empty()) {
    error = "The JWT payload has no email";
    return std::nullopt;
  }
  auto id = userForEmail(email, stringOr(*payload, "name"));
  return issueToken(id, "jwt");
}

std::optional<AuthUser> IdentityStore::authenticate(const httplib::Request& req) {
  const std::string header = req.get_header_value("Authorization");
  constexpr std::string_view kBearer = "Bearer ";
  if (header.size() <= kBearer.size() || header.compare(0, kBearer.size(), kBearer) != 0)
    return std::nullopt;
  auto row = db_.queryOne(
      "SELECT u.id, COALESCE(u.name, ''), t.kind FROM access_tokens t "
      "JOIN users u ON u.id = t.user_id WHERE t.token = ?",
      {header.substr(kBearer.size())});
  if (!row) return std::nullopt;
  return AuthUser{row->integer(0), row->text(1), row->text(2) == "jwt"};
}

json::object IdentityStore::userJson(std::int64_t id, const std::string& base) {
  auto row = db_.queryOne("SELECT id, name, agent, photo_url FROM users WHERE id = ?", {id});
  if (!row) return {};
  json::value photo = nullptr;
  if (!row->isNull(3)) {
    auto url = row->text(3);
    photo = json::object{{"content_url", url.starts_with("/") ? base + url : url}};
  }
  json::value name = nullptr;
  if (!row->isNull(1)) name = row->text(1);
  return json::object{{"id", row->integer(0)},         {"name", name},
                      {"agent", row->integer(2) != 0}, {"photo", photo},
                      {"tags", json::array{}},         {"user_fields", json::object{}}};
}

json::array IdentityStore::usersJson(const std::vector<std::int64_t>& ids,
                                     const std::string& base) {
  std::vector<std::int64_t> seen;
  json::array out;
  for (auto id : ids) {
    if (std::find(seen.begin(), seen.end(), id) != seen.end()) continue;
    seen.push_back(id);
    auto user = userJson(id, base);
    if (!user.empty()) out.push_back(std::move(user));
  }
  return out;
}

}  // namespace qvk::emulator
