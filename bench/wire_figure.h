// What the loopback driver's figures have in common: the clock, medians and
// spreads of timed samples, and the one row of the table a figure becomes.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace velmaro::bench {

using Clock = std::chrono::steady_clock;
using Micros = std::chrono::duration<double, std::micro>;

inline double percentile(std::vector<double> v, int percent) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  return v[std::min(v.size() - 1, v.size() * static_cast<std::size_t>(percent) / 100)];
}

inline double median(std::vector<double> v) {
  if (v.empty()) return 0;
  std::sort(v.begin(), v.end());
  const auto n = v.size();
  return n % 2 == 1 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}

// p10, p25, p50, p75 and p90 of `v` on standard error, for --quartiles.
inline void printSpread(const std::vector<double>& v, const char* name) {
  if (v.empty()) return;
  std::fprintf(stderr, "%s: p10 %.1f p25 %.1f p50 %.1f p75 %.1f p90 %.1f\n", name,
               percentile(v, 10), percentile(v, 25), percentile(v, 50), percentile(v, 75),
               percentile(v, 90));
}

// Wall time of one call of `f` in microseconds; `ok` turns false when it does.
template <class F>
double timeMicros(F&& f, bool& ok) {
  const auto start = Clock::now();
  ok = f() && ok;
  return Micros(Clock::now() - start).count();
}

struct Figure {
  std::string id;
  std::string measures;
  std::string unit;
  double value = 0;     // the library's figure
  double baseline = 0;  // what it is compared with
  double ratio = 0;     // as the target is stated
  std::string target;
  bool met = false;
};

}  // namespace velmaro::bench
