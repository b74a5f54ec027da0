#include "velmaro/ticketforms/ticket_field_pattern_cache.h"

#include <atomic>
#include <string>

#include "quorvel/platform/memory_cache.h"
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"
#include "velmaro/util/qvk_classic_logger.h"

namespace velmaro {
namespace {

using quorvel::platform::MemoryCache;
using quorvel::platform::Regex;

struct State {
  MemoryCache<std::string, TicketFieldPatternCache::Compiled> cache{
      {TicketFieldPatternCache::kCountLimit, TicketFieldPatternCache::kTextLimit}};
  std::atomic<std::size_t> compilations{0};
};

State& state() {
  static State instance;
  return instance;
}

}  // namespace

std::shared_ptr<const TicketFieldPatternCache::Compiled> TicketFieldPatternCache::compiled(
    std::string_view rawPattern) {
  auto& s = state();
  std::string key(rawPattern);
  if (auto hit = s.cache.object(key)) return hit;

  // Two threads that miss together both compile; the later store wins, and
  // both answers are equal.
  const auto cleaned = QVKTicketFormUtilities::cleanRegex(rawPattern);
  auto regex = Regex::compile(cleaned, {.dotMatchesLineSeparators = true});
  s.compilations.fetch_add(1, std::memory_order_relaxed);
  auto entry = std::make_shared<Compiled>();
  if (regex) {
    entry->regex = std::move(*regex);
  } else {
    QVKClassicLogger::w("Ticket field pattern %@ does not compile: %@", cleaned,
                        regex.error().localizedDescription());
  }
  const auto cost = key.size() + cleaned.size();
  s.cache.setObject(std::move(key), entry, cost);
  return entry;
}

std::size_t TicketFieldPatternCache::compilations() {
  return state().compilations.load(std::memory_order_relaxed);
}

void TicketFieldPatternCache::resetForTesting() {
  auto& s = state();
  s.cache.removeAll();
  s.compilations.store(0, std::memory_order_relaxed);
}

}  // namespace velmaro
