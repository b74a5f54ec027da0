// Two pieces of work timed pair by pair on the thread's CPU clock, in
// alternating order, inside one Google Benchmark loop: the library's work
// and its floor see the same caches, frequency and neighbours, so that their
// ratio holds still where two separately run benchmarks drift apart.
#pragma once

#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/json/parse.hpp>

namespace velmaro::bench {

class PairedCpuTimer {
 public:
  template <class Bare, class Library>
  void pair(Bare&& bare, Library&& library) {
    const bool bareFirst = bare_.size() % 2 == 0;
    if (bareFirst) bare_.push_back(timed(bare));
    library_.push_back(timed(library));
    if (!bareFirst) bare_.push_back(timed(bare));
  }

  // A library parse of `bytes` against the bare JSON parse of the same bytes,
  // pair by pair for the whole benchmark loop, then reported.
  template <class Library>
  static void againstBareParse(benchmark::State& state, const std::string& bytes,
                               Library&& library) {
    PairedCpuTimer timer;
    for (auto _ : state) {
      timer.pair(
          [&] {
            auto value = boost::json::parse(bytes);
            benchmark::DoNotOptimize(value);
          },
          [&] {
            auto records = library();
            benchmark::DoNotOptimize(records);
          });
    }
    timer.report(state);
  }

  // Medians of both, in microseconds, their ratio, and the spread of the
  // pairs' own ratios (p25, p75), as counters of the run.
  void report(benchmark::State& state) const {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < bare_.size(); ++i) ratios.push_back(library_[i] / bare_[i]);
    const double bare = at(bare_, 50);
    const double library = at(library_, 50);
    state.counters["bare_us"] = bare;
    state.counters["library_us"] = library;
    state.counters["ratio"] = bare > 0 ? library / bare : 0;
    state.counters["ratio_p25"] = at(ratios, 25);
    state.counters["ratio_p75"] = at(ratios, 75);
  }

 private:
  template <class F>
  static double timed(F& f) {
    const double start = now();
    f();
    return now() - start;
  }
  static double now() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e6 + static_cast<double>(ts.tv_nsec) / 1e3;
  }
  static double at(std::vector<double> v, std::size_t percent) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, v.size() * percent / 100)];
  }

  std::vector<double> bare_;
  std::vector<double> library_;
};

}  // namespace velmaro::bench
