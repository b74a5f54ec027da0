#pragma once

#include <string>

namespace quorvel {

// A new random version 4 UUID in its lower-case text form. Any thread.
std::string randomUuid();

}  // namespace quorvel
