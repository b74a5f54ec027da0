#include "quorvel/anonymous_identity.h"

#include "quorvel/random_uuid.h"

namespace quorvel {

AnonymousIdentity AnonymousIdentity::withGuid(std::string guid) const {
  AnonymousIdentity copy = *this;
  copy.guid_ = std::move(guid);
  return copy;
}

boost::json::object AnonymousIdentity::exchangeBody() const {
  boost::json::object identity;
  identity["guid"] = guid_;
  if (name_) identity["name"] = *name_;
  if (email_) identity["email"] = *email_;
  boost::json::object body;
  body["identity"] = std::move(identity);
  return body;
}

std::string AnonymousIdentity::makeGuid() {
  return randomUuid();
}

}  // namespace quorvel
