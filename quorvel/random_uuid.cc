#include "quorvel/random_uuid.h"

#include <cstdint>
#include <random>

#include <fmt/format.h>

namespace quorvel {

std::string randomUuid() {
  std::random_device device;
  std::mt19937_64 generator((static_cast<std::uint64_t>(device()) << 32) ^ device());
  std::uint64_t high = generator();
  std::uint64_t low = generator();
  high = (high & 0xFFFFFFFFFFFF0FFFull) | 0x0000000000004000ull;  // version 4
  low = (low & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;    // RFC 4122 variant
  return fmt::format("{:08x}-{:04x}-{:04x}-{:04x}-{:012x}", high >> 32, (high >> 16) & 0xFFFF,
                     high & 0xFFFF, low >> 48, low & 0xFFFFFFFFFFFFull);
}

}  // namespace quorvel
