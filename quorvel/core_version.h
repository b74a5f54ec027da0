#pragma once

namespace quorvel {

// The core library's version, as it appears in User-Agent.
inline constexpr const char* kCoreVersion = "0.1.0";

}  // namespace quorvel
