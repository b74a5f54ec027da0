// Memory for a long list answer: 850,000 categories in about 30 MiB (under
// the 32 MiB answer limit) made into records through the parse a provider
// uses, against the parse of the whole document into a tree that the list
// operations used before. Counter `peak_x_answer`: the process's peak
// resident memory during the parse, the answer's bytes included, divided by
// the answer's bytes (target < 6). Each iteration runs in a child process so
// that memory one parse leaves to the allocator does not flatter the next.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/process_status.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"

namespace {

using velmaro::AnswerParsing;
using velmaro::QVKDispatcherResponse;
using velmaro::QVKHelpCenterCategory;
using Records = std::vector<QVKHelpCenterCategory>;

constexpr int kCategories = 850000;

using velmaro::bench::statusKb;

// {"categories":[{"id":100000,"name":"Topic 100000"},...],"count":850000}:
// about 36 bytes a category, as small as a category comes.
const std::string& document() {
  static const std::string bytes = [] {
    std::string text = R"({"categories":[)";
    for (int i = 0; i < kCategories; ++i) {
      const auto id = std::to_string(100000 + i);
      if (i != 0) text += ',';
      text += R"({"id":)" + id + R"(,"name":"Topic )" + id + R"("})";
    }
    return text + R"(],"count":)" + std::to_string(kCategories) + "}";
  }();
  return bytes;
}

struct Figures {
  double seconds = 0;
  long peakGrowthKb = 0;
  std::size_t records = 0;
};

// In a child: the answer copied in, the peak reset, the parse timed.
template <class Parse>
Figures measureInChild(const Parse& parse) {
  int pipeFds[2];
  if (pipe(pipeFds) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    QVKDispatcherResponse response({}, document());
    std::ofstream("/proc/self/clear_refs") << "5";
    const long before = statusKb("VmRSS:");
    const auto start = std::chrono::steady_clock::now();
    auto records = parse(std::move(response));
    Figures figures;
    figures.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    figures.peakGrowthKb = statusKb("VmHWM:") - before;
    figures.records = records ? records->size() : 0;
    [[maybe_unused]] auto written = write(pipeFds[1], &figures, sizeof figures);
    _exit(0);
  }
  close(pipeFds[1]);
  Figures figures;
  [[maybe_unused]] auto got = read(pipeFds[0], &figures, sizeof figures);
  close(pipeFds[0]);
  waitpid(child, nullptr, 0);
  return figures;
}

template <class Parse>
void measure(benchmark::State& state, const Parse& parse) {
  const double answer = static_cast<double>(document().size());
  long peakKb = 0;
  for (auto _ : state) {
    const auto figures = measureInChild(parse);
    if (figures.records != kCategories) state.SkipWithError("wrong number of records");
    state.SetIterationTime(figures.seconds);
    peakKb = std::max(peakKb, figures.peakGrowthKb);
  }
  state.counters["answer_MB"] = answer / 1e6;
  state.counters["record_bytes"] = sizeof(QVKHelpCenterCategory);
  state.counters["peak_MB"] = (answer + peakKb * 1024.0) / 1e6;
  state.counters["peak_x_answer"] = (answer + peakKb * 1024.0) / answer;
}

void BM_CategoriesTree(benchmark::State& state) {
  measure(state, AnswerParsing::json<Records>(&QVKHelpCenterCategory::parseCategories));
}

void BM_CategoriesStreamed(benchmark::State& state) {
  measure(state, AnswerParsing::list<QVKHelpCenterCategory>("categories",
                                                            &QVKHelpCenterCategory::parseCategory));
}

}  // namespace

BENCHMARK(BM_CategoriesTree)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CategoriesStreamed)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
