#include "velmaro/core/qvk_authentication_type_utilities.h"

#include "quorvel/jwt_identity.h"

namespace velmaro {

QVKAuthenticationType QVKAuthenticationTypeUtilities::authenticationTypeForIdentity(
    const quorvel::Identity* identity) {
  return dynamic_cast<const quorvel::QVKObjCJwt*>(identity) != nullptr
             ? QVKAuthenticationTypeJWT
             : QVKAuthenticationTypeAnonymous;
}

}  // namespace velmaro
