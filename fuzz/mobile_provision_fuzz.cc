// Any bytes as an embedded provisioning profile: the bytes-to-dictionary
// step and the environment it implies must neither crash nor leak.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "velmaro/util/qvk_mobile_provision_analyzer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using velmaro::QVKMobileProvisionAnalyzer;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto plist = QVKMobileProvisionAnalyzer::plistFromProfileBytes(bytes);
  const auto environment = QVKMobileProvisionAnalyzer::environmentFor(plist);
  if (environment != QVKMobileProvisionAnalyzer::kDevelopment &&
      environment != QVKMobileProvisionAnalyzer::kProduction) {
    __builtin_trap();
  }
  return 0;
}
