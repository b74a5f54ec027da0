#pragma once

#include "quorvel/platform/error.h"

namespace velmaro {

// The request provider's own refusals, in the "QVDispatcher" domain. Each
// is logged at warning level when it is made.
class QVKRequestProviderErrors {
 public:
  static constexpr const char* kDomain = "QVDispatcher";
  static constexpr const char* kReasonKey = "qv_dispatcher_err";
  static constexpr long kAccountRestriction = -7001;
  static constexpr long kTicketFormsNotAvailable = -7002;
  static constexpr long kTicketFormsEmptyList = -7003;
  static constexpr long kUnknownAuthentication = -1013;
  static constexpr const char* kUnknownAuthenticationReason =
      "Unknown authentication type, can't complete request. SDK intialisation may have failed.";

  static quorvel::platform::Error accountRestrictionError();
  static quorvel::platform::Error ticketFormsNotAvailableError();
  static quorvel::platform::Error ticketFormsEmptyListError();
  // No localized description: only the reason.
  static quorvel::platform::Error unknownAuthenticationError();
};

}  // namespace velmaro
