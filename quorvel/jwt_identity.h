#pragma once

#include <string>

#include "quorvel/identity.h"

namespace quorvel {

// A user vouched for by the host's own server with a signed JWT.
class JwtIdentity final : public Identity {
 public:
  explicit JwtIdentity(std::string jwt) : jwt_(std::move(jwt)) {}

  const std::string& jwt() const { return jwt_; }

  IdentityType type() const override { return IdentityType::jwt; }
  // "jwt:" and a hash of the token, never the token itself.
  std::string scope() const override;
  std::string exchangePath() const override { return "/api/mobile/sdk/access/jwt.json"; }
  boost::json::object exchangeBody() const override;

 private:
  std::string jwt_;
};

using QVKObjCJwt = JwtIdentity;

}  // namespace quorvel
