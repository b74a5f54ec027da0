#pragma once

#include <string>

#include <boost/json/object.hpp>

namespace quorvel {

enum class IdentityType { jwt, anonymous };

// Who the end user is to the service. The core exchanges an identity for an
// access token when a request needs authentication.
class Identity {
 public:
  Identity() = default;
  Identity(const Identity&) = default;
  Identity& operator=(const Identity&) = default;
  virtual ~Identity() = default;

  virtual IdentityType type() const = 0;
  // A stable text naming this user, so that tokens and cached authenticated
  // answers of one identity are never used for another. Holds no secret.
  virtual std::string scope() const = 0;
  // The path of the token exchange, below the service URL.
  virtual std::string exchangePath() const = 0;
  // The JSON body of the token exchange: {"identity":{...}}.
  virtual boost::json::object exchangeBody() const = 0;
};

}  // namespace quorvel
