#pragma once

#include <optional>
#include <string>

#include "quorvel/identity.h"

namespace quorvel {

// A user known only by an optional name and email. The guid that tells this
// device's anonymous user apart is made once and kept in the session store;
// Quorvel::setIdentity fills it in.
class AnonymousIdentity final : public Identity {
 public:
  AnonymousIdentity() = default;
  AnonymousIdentity(std::optional<std::string> name, std::optional<std::string> email)
      : name_(std::move(name)), email_(std::move(email)) {}

  const std::optional<std::string>& name() const { return name_; }
  const std::optional<std::string>& email() const { return email_; }
  // Empty until the identity was handed to Quorvel::setIdentity.
  const std::string& guid() const { return guid_; }
  AnonymousIdentity withGuid(std::string guid) const;

  IdentityType type() const override { return IdentityType::anonymous; }
  std::string scope() const override { return "anonymous:" + guid_; }
  std::string exchangePath() const override { return "/api/mobile/sdk/access/anonymous.json"; }
  // {"identity":{"guid":…,"name":…,"email":…}}; an absent name or email is
  // left out.
  boost::json::object exchangeBody() const override;

  // A new random guid (version 4 UUID text).
  static std::string makeGuid();

 private:
  std::optional<std::string> name_;
  std::optional<std::string> email_;
  std::string guid_;
};

}  // namespace quorvel
