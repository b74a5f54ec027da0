#include "quorvel/jwt_identity.h"

#include <cstdint>

#include <fmt/format.h>

namespace quorvel {

std::string JwtIdentity::scope() const {
  // FNV-1a: stable across runs (the scope is stored on disk), and the token
  // cannot be read back from it.
  std::uint64_t hash = 14695981039346656037ull;
  for (const unsigned char c : jwt_) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  return fmt::format("jwt:{:016x}", hash);
}

boost::json::object JwtIdentity::exchangeBody() const {
  boost::json::object identity;
  identity["jwt"] = jwt_;
  boost::json::object body;
  body["identity"] = std::move(identity);
  return body;
}

}  // namespace quorvel
