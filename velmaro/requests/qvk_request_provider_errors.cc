#include "velmaro/requests/qvk_request_provider_errors.h"

#include <string>

#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {

using quorvel::platform::Error;

namespace {

Error refusal(long code, const std::string& description, const std::string& reason) {
  QVKClassicLogger::warn(description);
  Error error(QVKRequestProviderErrors::kDomain, code);
  error.userInfo[Error::kLocalizedDescriptionKey] = description;
  error.userInfo[QVKRequestProviderErrors::kReasonKey] = reason;
  return error;
}

}  // namespace

Error QVKRequestProviderErrors::accountRestrictionError() {
  return refusal(kAccountRestriction,
                 "Conversations disabled, this feature is not available on your plan or was "
                 "disabled.",
                 "Access Denied.");
}

Error QVKRequestProviderErrors::ticketFormsNotAvailableError() {
  return refusal(kTicketFormsNotAvailable,
                 "Ticket Forms are not available, this feature is not available on your plan or "
                 "was disabled.",
                 "Access Denied.");
}

Error QVKRequestProviderErrors::ticketFormsEmptyListError() {
  return refusal(kTicketFormsEmptyList, "Ticket forms must at least contain 1 Id.",
                 "Ticket forms must at least contain 1 Id");
}

Error QVKRequestProviderErrors::unknownAuthenticationError() {
  Error error(kDomain, kUnknownAuthentication);
  error.userInfo[kReasonKey] = kUnknownAuthenticationReason;
  return error;
}

}  // namespace velmaro
