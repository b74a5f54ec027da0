#include "velmaro/blips/blip_vocabulary.h"

#include "velmaro/util/qvk_bundle_utils.h"

namespace velmaro {

const std::string& BlipVocabulary::version() {
  static const std::string version = QVKBundleUtils::sdkVersion();
  return version;
}

}  // namespace velmaro
