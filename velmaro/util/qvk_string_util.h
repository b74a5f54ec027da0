#pragma once

#include <string>
#include <vector>

namespace velmaro {

class QVKStringUtil {
 public:
  // The strings joined with "," and no spaces; "" for an empty list.
  static std::string csvStringFromArray(const std::vector<std::string>& strings);
};

}  // namespace velmaro
