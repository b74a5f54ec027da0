#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace velmaro {

// The key enumeration of a decodable record: each case with its raw string.
// A string that names no case yields no key, so unknown keys in a document are
// simply not read.
template <class Key, std::size_t N>
struct CodingKeys {
  std::array<std::pair<Key, std::string_view>, N> cases;

  constexpr std::optional<Key> fromString(std::string_view text) const {
    for (const auto& [key, raw] : cases) {
      if (raw == text) return key;
    }
    return std::nullopt;
  }
  constexpr std::string_view stringValue(Key key) const {
    for (const auto& [k, raw] : cases) {
      if (k == key) return raw;
    }
    return {};
  }
};

}  // namespace velmaro
