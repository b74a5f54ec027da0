#pragma once

#include <string>

#include "quorvel/platform/error.h"

namespace qvk {

// What the user could do next about an error; empty when there is nothing
// useful to say. The hint follows what happened (a refused connection, a
// refused identity, a failing service), never the command that met it.
class ErrorHints {
 public:
  // What a hint may refer to from the command line.
  struct Context {
    std::string url;
    // --jwt was given: a 401 means that token was refused, not that one is missing.
    bool jwtGiven = false;
  };

  static std::string hintFor(const quorvel::platform::Error& error, const Context& context);
};

}  // namespace qvk
