// Checking a ticket field's input against its validation pattern: the
// library's check, which compiles each pattern once per process, against
// compiling the same cleaned pattern for every check with the platform's
// Regex (what a check costs without the cache). Both match the same text
// anchored at its start with "." matching line separators.
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "quorvel/platform/regex.h"
#include "velmaro/ticketforms/qvk_ticket_form_utilities.h"

namespace {

using quorvel::platform::Range;
using quorvel::platform::Regex;
using velmaro::QVKTicketFormUtilities;

// An order-number field: a count the cleaner keeps and literal braces it
// escapes. The text is what a user has typed so far.
constexpr std::string_view kPattern = R"(^{ORD}-\d{4,8}(-[A-Z]{2})?$)";
constexpr std::string_view kText = "{ORD}-2024117-EU";

void BM_CheckStringCachedPattern(benchmark::State& state) {
  bool matched = QVKTicketFormUtilities::checkString(kText, kPattern);  // compiled here, once
  for (auto _ : state) {
    matched = QVKTicketFormUtilities::checkString(kText, kPattern);
    benchmark::DoNotOptimize(matched);
  }
  if (!matched) state.SkipWithError("the text should match");
}

void BM_CompilePerCheck(benchmark::State& state) {
  const auto cleaned = QVKTicketFormUtilities::cleanRegex(kPattern);
  bool matched = false;
  for (auto _ : state) {
    auto regex = Regex::compile(cleaned, {.dotMatchesLineSeparators = true});
    matched = false;
    if (regex) {
      auto match = regex->firstMatch(kText, Range::whole(), /*anchored=*/true);
      matched = match.ok() && match->has_value();
    }
    benchmark::DoNotOptimize(matched);
  }
  if (!matched) state.SkipWithError("the text should match");
}

}  // namespace

BENCHMARK(BM_CheckStringCachedPattern)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CompilePerCheck)->Unit(benchmark::kMicrosecond);
