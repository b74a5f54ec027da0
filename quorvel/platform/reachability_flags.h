#pragma once

#include <cstdint>

namespace quorvel::platform {

// The bits of a reachability reading, with the values phone platforms give
// them, so that code written against those values reads these unchanged.
// The Linux source sets reachable, is-direct, is-local-address and is-WWAN;
// the connection-on-demand family has no counterpart here and stays clear.
namespace ReachabilityFlags {
inline constexpr std::uint32_t TransientConnection = 1u << 0;
inline constexpr std::uint32_t Reachable = 1u << 1;
inline constexpr std::uint32_t ConnectionRequired = 1u << 2;
inline constexpr std::uint32_t ConnectionOnTraffic = 1u << 3;
inline constexpr std::uint32_t InterventionRequired = 1u << 4;
inline constexpr std::uint32_t ConnectionOnDemand = 1u << 5;
inline constexpr std::uint32_t IsLocalAddress = 1u << 16;
inline constexpr std::uint32_t IsDirect = 1u << 17;
inline constexpr std::uint32_t IsWWAN = 1u << 18;
}  // namespace ReachabilityFlags

}  // namespace quorvel::platform
