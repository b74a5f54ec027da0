#pragma once

#include "quorvel/identity.h"

namespace velmaro {

enum QVKAuthenticationType : long {
  QVKAuthenticationTypeJWT = 1,
  QVKAuthenticationTypeAnonymous = 2,
};

class QVKAuthenticationTypeUtilities {
 public:
  // JWT for the core library's JWT identity; anonymous for anything else,
  // no identity included.
  static QVKAuthenticationType authenticationTypeForIdentity(const quorvel::Identity* identity);
};

}  // namespace velmaro
