#include "velmaro/core/support_headers.h"

#include "velmaro/util/qvk_bundle_utils.h"

namespace velmaro {

std::string SupportHeaders::version() const {
  // The bundle does not change while the process runs: read it once.
  static const std::string version = QVKBundleUtils::sdkVersion();
  return version;
}

}  // namespace velmaro
