#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <httplib.h>

namespace qvk::emulator {

class Database;

// The user behind a request's bearer token.
struct AuthUser {
  std::int64_t id = 0;
  std::string name;
  bool jwt = false;  // false: an anonymous identity
};

// Users and access tokens. The access-token exchange makes a random token and
// remembers whose it is; an anonymous identity is known by its guid, a JWT
// identity by the email in the token's payload. JWT signatures are not
// checked: the emulator is for offline tests and must accept test tokens.
class IdentityStore {
 public:
  explicit IdentityStore(Database& db) : db_(db) {}

  // {"guid": ..., "name": ..., "email": ...}; answers the token, or nothing
  // with a reason in `error` (no guid).
  std::optional<std::string> exchangeAnonymous(const boost::json::object& identity,
                                               std::string& error);
  // A JWT with three base64url parts whose payload has "email" (and
  // optionally "name"); answers the token or nothing with a reason.
  std::optional<std::string> exchangeJwt(const std::string& jwt, std::string& error);

  // The user of the "Authorization: Bearer <token>" header, if known.
  std::optional<AuthUser> authenticate(const httplib::Request& req);

  // The user that owns an anonymous guid, made on first sight.
  std::int64_t userForGuid(const std::string& guid, const std::string& name,
                           const std::string& email);
  std::int64_t userForEmail(const std::string& email, const std::string& name);

  // The user records of the given ids, in the service's shape, each id once.
  // `base` makes stored relative avatar paths absolute.
  boost::json::array usersJson(const std::vector<std::int64_t>& ids, const std::string& base);
  boost::json::object userJson(std::int64_t id, const std::string& base);

  // The payload object of a JWT, or nothing when it is not one.
  static std::optional<boost::json::object> jwtPayload(const std::string& jwt);

 private:
  std::string issueToken(std::int64_t userId, const char* kind);

  Database& db_;
};

}  // namespace qvk::emulator
