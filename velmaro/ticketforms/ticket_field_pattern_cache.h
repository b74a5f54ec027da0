#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "quorvel/platform/regex.h"

namespace velmaro {

// The field validation patterns of the process, cleaned (cleanRegex) and
// compiled once, by raw pattern: compiling costs ~50 µs, a match with a
// compiled pattern well under a microsecond, and a form's fields are checked
// as the user types. A pattern that does not compile is remembered as such
// and not compiled again. Bounded (least recently used first out), so a
// stream of distinct patterns cannot grow it without end; safe from any
// thread (a compiled Regex serves several threads at once).
class TicketFieldPatternCache {
 public:
  static constexpr std::size_t kCountLimit = 256;
  // Bytes of raw and cleaned pattern text held.
  static constexpr std::size_t kTextLimit = 1 << 20;

  struct Compiled {
    std::optional<quorvel::platform::Regex> regex;  // none: the pattern does not compile
  };

  // The compiled form of the raw pattern (compiled now on a miss).
  static std::shared_ptr<const Compiled> compiled(std::string_view rawPattern);

  // How many patterns have been compiled since the start (or the last reset).
  static std::size_t compilations();
  // Empty cache, count 0 (tests).
  static void resetForTesting();
};

}  // namespace velmaro
