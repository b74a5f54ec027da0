#pragma once

#include <string>

#include "quorvel/platform/error.h"

namespace qvk {

// What the user could do next about an error; empty when there is nothing
// useful to say.
class ErrorHints {
 public:
  static std::string hintFor(const quorvel::platform::Error& error, const std::string& url);
};

}  // namespace qvk
