#include "quorvel/store_module.h"

#include "quorvel/core_logger.h"
#include "quorvel/core_services.h"
#include "quorvel/quorvel.h"

namespace quorvel {

void StoreModule::clearSettingsAndSession() const {
  sessionStore->removeAllExcept({Quorvel::kAnonymousGuidKey});
  if (const auto services = services_.lock()) services->httpCache().clear();
  CoreLogger::info("Cleared the kept settings and session");
}

}  // namespace quorvel
