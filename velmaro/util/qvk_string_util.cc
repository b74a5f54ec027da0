#include "velmaro/util/qvk_string_util.h"

namespace velmaro {

std::string QVKStringUtil::csvStringFromArray(const std::vector<std::string>& strings) {
  std::string joined;
  for (std::size_t i = 0; i < strings.size(); ++i) {
    if (i != 0) joined += ',';
    joined += strings[i];
  }
  return joined;
}

}  // namespace velmaro
