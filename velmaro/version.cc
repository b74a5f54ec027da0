#include "velmaro/version.h"

namespace velmaro {

std::string buildVersion() { return VELMARO_VERSION; }

}  // namespace velmaro
