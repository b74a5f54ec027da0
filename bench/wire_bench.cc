// Loopback figures against a real qvk-emulator, each measured side by side
// with raw libcurl in the same run:
//   B2  one provider call (call to callback) vs a raw keep-alive GET of the same URL
//   B3  the same read answered from the HTTP cache vs B2's network call
//   B4  200 provider calls in flight at once (distinct URLs) vs 200 raw multi
//       transfers of the same URLs
//   B6-B8  the requests side (RequestWireFigures)
// With --b1 FILE it also reads the in-process parse figures (B1, B5) that
// velmaro_bench wrote as JSON, with --m1 FILE the peak memory of a 30 MB list
// answer that velmaro_memory_bench wrote, and prints the one table of all the
// figures; --out FILE writes the same figures as JSON.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json.hpp>
#include <curl/curl.h>
#include <unistd.h>

#include "bench/raw_client.h"
#include "bench/request_wire_figures.h"
#include "bench/wire_figure.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/provider_service.h"
#include "quorvel/quorvel.h"
#include "tests/emulator_process.h"
#include "velmaro/core/qvk_api_dispatcher.h"
#include "velmaro/core/support.h"
#include "velmaro/core/support_headers.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"

namespace {

using namespace velmaro::bench;

constexpr int kB2Blocks = 10;

double threadCpuMicros() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

struct Options {
  std::string emulator = QVK_EMULATOR_BINARY;
  std::string b1File;
  std::string m1File;
  std::string outFile;
  int rounds = 3000;  // B2 pairs: enough for a stable median on a noisy 2-core VM
  int hits = 2000;    // B3 cache hits
  int bursts = 15;    // B4 rounds of 200
  int inFlight = 200;
  int requestRounds = 2000;   // B6-B8 pairs each; 0 leaves them out
  bool requestsOnly = false;  // B6-B8 alone, e.g. under a profiler
  bool diagnose = false;
  bool quartiles = false;  // B2's spread, by position in the pair
  // "raw" or "provider": only that call, `rounds` times, for a profiler;
  // two runs of different lengths give the cost of one call by difference.
  std::string only;
};

class Library {
 public:
  Library(const std::string& url, const std::filesystem::path& dataDir)
      : loop_(std::make_shared<quorvel::platform::RunLoop>()) {
    quorvel::QuorvelOptions options;
    options.mainQueue = loop_;
    options.dataDirectory = dataDir;
    options.logLevel = quorvel::LogLevel::off;
    core_ = quorvel::Quorvel::initialize("bench", url, "bench-client", options);
    velmaro::Support::initialize(core_);
    provider_ = std::make_unique<velmaro::QVKHelpCenterProvider>(core_);
  }
  ~Library() {
    core_->shutdown();
    loop_->runPending();
  }

  // The headers a Help Center read of `url` carries, for the raw client.
  std::vector<std::pair<std::string, std::string>> headers(const std::string& url) const {
    quorvel::ProviderService service(core_->accountDetails(), url, false, quorvel::HttpMethod::get,
                                     std::make_shared<velmaro::SupportHeaders>(), std::nullopt,
                                     loop_);
    return service.headers();
  }

  void clearCache() { core_->storeModule().clearSettingsAndSession(); }

  // One read through the core library alone (ProviderService), and through
  // the dispatcher alone, for --diagnose.
  bool coreCall(const std::string& url) {
    quorvel::ProviderService service(core_->accountDetails(), url, false, quorvel::HttpMethod::get,
                                     std::make_shared<velmaro::SupportHeaders>(), std::nullopt,
                                     loop_);
    bool done = false;
    bool good = false;
    service.perform([&](std::optional<std::string> data, std::optional<quorvel::HTTPURLResponse> r,
                        std::optional<quorvel::platform::Error> e) {
      good = data && r && r->statusCode() == 200 && !e;
      done = true;
    });
    loop_->runUntil([&] { return done; }, std::chrono::seconds(30));
    return good;
  }
  bool dispatcherCall(const std::string& url) {
    bool done = false;
    bool good = false;
    velmaro::QVKAPIDispatcher::instanceWithQuorvel(core_)->executeRequestNoBlock(
        quorvel::platform::URLRequest(quorvel::platform::Url::make(url)),
        [&](velmaro::QVKDispatcherResponse r) {
          good = r.data.has_value();
          done = true;
        },
        [&](quorvel::platform::Error) { done = true; });
    loop_->runUntil([&] { return done; }, std::chrono::seconds(30));
    return good;
  }

  // Issues `count` category reads at once and pumps until all answered;
  // true when every one answered with categories.
  bool categories(int count) {
    int answered = 0;
    bool allOk = true;
    for (int i = 0; i < count; ++i) {
      provider_->getCategoriesWithLocale(
          "en-us", [&](std::optional<std::vector<velmaro::QVKHelpCenterCategory>> items,
                       std::optional<quorvel::platform::Error> error) {
            allOk = allOk && items && !items->empty() && !error;
            ++answered;
          });
    }
    loop_->runUntil([&] { return answered == count; }, std::chrono::seconds(30));
    return allOk && answered == count;
  }

  // Issues a flat-article read of each of pages 1..count at once (one
  // article a page; pages past the last answer empty) and pumps until all
  // answered; true when every one answered without error. Distinct URLs, so
  // that no call can be answered from what an earlier one stored.
  bool flatArticlePages(int count) {
    int answered = 0;
    bool allOk = true;
    for (int page = 1; page <= count; ++page) {
      provider_->getFlatArticlesWithLocale(
          "en-us", page, 1,
          [&](std::optional<std::vector<velmaro::QVKHelpCenterFlatArticle>> items,
              std::optional<quorvel::platform::Error> error) {
            allOk = allOk && items && !error;
            ++answered;
          });
    }
    loop_->runUntil([&] { return answered == count; }, std::chrono::seconds(30));
    return allOk && answered == count;
  }

 private:
  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<quorvel::Quorvel> core_;
  std::unique_ptr<velmaro::QVKHelpCenterProvider> provider_;
};

// The runs of a Google Benchmark JSON report.
std::optional<boost::json::array> benchmarksIn(const std::string& file) {
  std::ifstream in(file);
  if (!in) return std::nullopt;
  std::stringstream text;
  text << in.rdbuf();
  boost::system::error_code ec;
  auto doc = boost::json::parse(text.str(), ec);
  if (ec || !doc.is_object() || !doc.as_object().contains("benchmarks")) return std::nullopt;
  return doc.at("benchmarks").as_array();
}

// A figure measured pair by pair in velmaro_bench (PairedCpuTimer): the
// median over its repetitions of the library's and the bare parse's median
// CPU time. With `quartiles`, the pairs' own ratios p25 to p75 and the
// spread over the repetitions go to standard error.
std::optional<Figure> readPaired(const boost::json::array& benchmarks, std::string_view run,
                                 Figure f, double limit, bool quartiles) {
  for (const auto& b : benchmarks) {
    const auto& o = b.as_object();
    if (o.at("run_name").as_string() != run) continue;
    const auto ratio = o.at("ratio").to_number<double>();
    if (quartiles && o.at("aggregate_name") == "median") {
      std::fprintf(stderr, "%s pair ratios: p25 %.3f p50 %.3f p75 %.3f\n", f.id.c_str(),
                   o.at("ratio_p25").to_number<double>(), ratio,
                   o.at("ratio_p75").to_number<double>());
    }
    if (quartiles && o.at("aggregate_name") == "stddev") {
      std::fprintf(stderr, "%s ratio stddev over repetitions: %.3f\n", f.id.c_str(), ratio);
    }
    if (o.at("aggregate_name") != "median") continue;
    f.value = o.at("library_us").to_number<double>();
    f.baseline = o.at("bare_us").to_number<double>();
    f.ratio = ratio;  // the median over the repetitions of each one's ratio
    f.met = f.ratio <= limit;
  }
  if (f.baseline <= 0) return std::nullopt;
  return f;
}

// B1 and B5 from velmaro_bench's report.
std::vector<Figure> readParseFigures(const std::string& file, bool quartiles) {
  std::vector<Figure> figures;
  const auto benchmarks = benchmarksIn(file);
  if (!benchmarks) return figures;
  if (auto b1 = readPaired(*benchmarks, "BM_HelpCenterParseAgainstBare",
                           {"B1", "550 KB article list to records (median CPU time)", "us", 0, 0, 0,
                            "<= 1.5x", false},
                           1.5, quartiles)) {
    figures.push_back(*b1);
  }
  if (auto b5 = readPaired(*benchmarks, "BM_RequestListParseAgainstBare",
                           {"B5", "300 KB request list to records (median CPU time)", "us", 0, 0, 0,
                            "<= 1.5x", false},
                           1.5, quartiles)) {
    figures.push_back(*b5);
  }
  return figures;
}

// M1 from velmaro_memory_bench's report: the peak memory of the streamed
// categories list against the answer's size.
std::optional<Figure> readM1(const std::string& file) {
  const auto benchmarks = benchmarksIn(file);
  if (!benchmarks) return std::nullopt;
  for (const auto& b : *benchmarks) {
    const auto& o = b.as_object();
    if (std::string_view(o.at("run_name").as_string()).rfind("BM_CategoriesStreamed", 0) != 0)
      continue;
    const double peak = o.at("peak_MB").to_number<double>();
    const double answer = o.at("answer_MB").to_number<double>();
    return Figure{"M1",   "30 MB list answer to records, peak memory (850k)",
                  "MB",   peak,
                  answer, peak / answer,
                  "< 6x", peak / answer < 6};
  }
  return std::nullopt;
}

bool parseArgs(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto next = [&]() -> std::string { return i + 1 < argc ? argv[++i] : ""; };
    if (arg == "--emulator") {
      o.emulator = next();
    } else if (arg == "--b1") {
      o.b1File = next();
    } else if (arg == "--m1") {
      o.m1File = next();
    } else if (arg == "--out") {
      o.outFile = next();
    } else if (arg == "--rounds") {
      o.rounds = std::stoi(next());
    } else if (arg == "--quick") {
      o.rounds = 60;
      o.hits = 300;
      o.bursts = 4;
      o.requestRounds = 200;
    } else if (arg == "--requests-only") {
      o.requestsOnly = true;
    } else if (arg == "--request-rounds") {
      o.requestRounds = std::stoi(next());
    } else if (arg == "--diagnose") {
      o.diagnose = true;
    } else if (arg == "--quartiles") {
      o.quartiles = true;
    } else if (arg == "--only") {
      o.only = next();
      if (o.only != "raw" && o.only != "provider") return false;
    } else {
      std::cerr
          << "usage: velmaro_wire_bench [--emulator PATH] [--b1 FILE] [--m1 FILE] [--out FILE]\n"
             "                          [--rounds N] [--request-rounds N] [--requests-only] "
             "[--quick]\n"
             "                          [--diagnose] [--quartiles] [--only raw|provider]\n";
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  if (!parseArgs(argc, argv, o)) return 2;
  curl_global_init(CURL_GLOBAL_DEFAULT);

  // A long max-age so that the cache-hit figure stays within it.
  velmaro::testing::EmulatorProcess emulator(o.emulator, {"--hc-max-age", "3600"});
  if (!emulator.running()) {
    std::cerr << "error: qvk-emulator did not start: " << emulator.error() << "\n";
    return 1;
  }
  const auto dataDir =
      std::filesystem::temp_directory_path() / ("velmaro-wire-bench-" + std::to_string(::getpid()));
  const std::string url = emulator.url() + "/api/v2/help_center/en-us/categories.json?per_page=100";
  bool ok = true;
  std::vector<Figure> figures;
  if (!o.requestsOnly) {
    Library library(emulator.url(), dataDir);
    RawClient raw(library.headers(url));

    // Warm both paths: connections, TLS-less handles, the emulator's caches.
    for (int i = 0; i < 50; ++i) {
      ok = raw.get(url) && ok;
      library.clearCache();
      ok = library.categories(1) && ok;
    }

    if (!o.only.empty()) {
      // The cache is emptied before either call, so that the difference of
      // two profiles is the calls' alone.
      for (int i = 0; i < o.rounds; ++i) {
        library.clearCache();
        ok = (o.only == "raw" ? raw.get(url) : library.categories(1)) && ok;
      }
      return ok ? 0 : 1;
    }

    if (o.diagnose) {
      // Wall time, and the calling thread's CPU time for the raw GET and the
      // provider call: what the main thread itself spends, system calls
      // included, apart from waiting for the emulator.
      std::vector<double> t[4];
      std::vector<double> rawCpu;
      std::vector<double> providerCpu;
      for (int i = 0; i < o.rounds; ++i) {
        double cpuBefore = threadCpuMicros();
        t[0].push_back(timeMicros([&] { return raw.get(url); }, ok));
        rawCpu.push_back(threadCpuMicros() - cpuBefore);
        library.clearCache();
        t[1].push_back(timeMicros([&] { return library.coreCall(url); }, ok));
        library.clearCache();
        t[2].push_back(timeMicros([&] { return library.dispatcherCall(url); }, ok));
        library.clearCache();
        cpuBefore = threadCpuMicros();
        t[3].push_back(timeMicros([&] { return library.categories(1); }, ok));
        providerCpu.push_back(threadCpuMicros() - cpuBefore);
      }
      std::printf("median us: raw %.1f  core %.1f  dispatcher %.1f  provider %.1f\n", median(t[0]),
                  median(t[1]), median(t[2]), median(t[3]));
      std::printf("median thread CPU us: raw %.1f  provider %.1f\n", median(rawCpu),
                  median(providerCpu));
      std::vector<double> hit;
      library.coreCall(url);
      for (int i = 0; i < o.rounds; ++i) {
        hit.push_back(timeMicros([&] { return library.coreCall(url); }, ok));
      }
      std::printf("median us: core cache hit %.1f\n", median(hit));
      return 0;
    }

    // B2: interleaved pairs in alternating order. The cache is emptied
    // (untimed) before each pair, so that the library's call goes to the
    // network, and both calls of a pair come equally soon after that work.
    // The pairs run in blocks, each with a library and a raw client of its
    // own: new connections, served by other emulator threads. How those
    // threads land on the VM's two processors against the clients' threads
    // moves a block's figures by up to 2x either way, so one pair of
    // connections would measure its placement as much as the library.
    std::vector<double> rawTimes;
    std::vector<double> callTimes;
    const int perBlock = std::max(1, o.rounds / kB2Blocks);
    for (int block = 0; block < kB2Blocks; ++block) {
      Library blockLibrary(emulator.url(), dataDir / ("b2-" + std::to_string(block)));
      RawClient blockRaw(blockLibrary.headers(url));
      for (int i = 0; i < 20; ++i) {
        ok = blockRaw.get(url) && ok;
        blockLibrary.clearCache();
        ok = blockLibrary.categories(1) && ok;
      }
      for (int i = 0; i < perBlock; ++i) {
        blockLibrary.clearCache();
        auto rawCall = [&] {
          rawTimes.push_back(timeMicros([&] { return blockRaw.get(url); }, ok));
        };
        auto libCall = [&] {
          callTimes.push_back(timeMicros([&] { return blockLibrary.categories(1); }, ok));
        };
        if (i % 2 == 0) {
          rawCall();
          libCall();
        } else {
          libCall();
          rawCall();
        }
      }
    }
    // The figure is the median over the blocks of each block's ratio of
    // medians: a block whose placement was bad, or that met a busy host, is
    // an outlier among ten rather than a shift of all the pooled times.
    const std::size_t perBlockDone = rawTimes.size() / kB2Blocks;
    std::vector<double> blockRatios;
    std::vector<double> blockRaw;
    std::vector<double> blockCall;
    for (int block = 0; block < kB2Blocks; ++block) {
      const auto from = static_cast<std::ptrdiff_t>(block * perBlockDone);
      const auto to = from + static_cast<std::ptrdiff_t>(perBlockDone);
      blockRaw.push_back(median({rawTimes.begin() + from, rawTimes.begin() + to}));
      blockCall.push_back(median({callTimes.begin() + from, callTimes.begin() + to}));
      blockRatios.push_back(blockCall.back() / blockRaw.back());
    }
    if (o.quartiles) {
      auto quartiles = [](std::vector<double> v, const char* name) {
        std::sort(v.begin(), v.end());
        std::fprintf(stderr, "%s: p10 %.0f p25 %.0f p50 %.0f p75 %.0f p90 %.0f\n", name,
                     v[v.size() / 10], v[v.size() / 4], v[v.size() / 2], v[v.size() * 3 / 4],
                     v[v.size() * 9 / 10]);
      };
      quartiles(rawTimes, "raw");
      quartiles(callTimes, "provider");
      std::vector<double> rawFirst, libFirst, rawSecond, libSecond;
      for (std::size_t i = 0; i < rawTimes.size(); ++i) {
        (i % 2 == 0 ? rawFirst : rawSecond).push_back(rawTimes[i]);
        (i % 2 == 0 ? libSecond : libFirst).push_back(callTimes[i]);
      }
      quartiles(rawFirst, "raw first");
      quartiles(rawSecond, "raw second");
      quartiles(libFirst, "provider first");
      quartiles(libSecond, "provider second");
      for (int block = 0; block < kB2Blocks; ++block) {
        std::fprintf(stderr, "B2 block %d: raw %.1f us, provider %.1f us, %.3fx\n", block,
                     blockRaw[block], blockCall[block], blockRatios[block]);
      }
      std::fprintf(stderr, "B2 pooled medians: %.3fx\n", median(callTimes) / median(rawTimes));
    }
    const double b2 = median(blockCall);
    const double b2raw = median(blockRaw);
    const double b2ratio = median(blockRatios);
    figures.push_back({"B2", "one getCategoriesWithLocale call, call to callback", "us", b2, b2raw,
                       b2ratio, "<= 1.25x", b2ratio <= 1.25});

    // B3: the same read within its max-age, from the HTTP cache.
    ok = library.categories(1) && ok;
    std::vector<double> hitTimes;
    for (int i = 0; i < o.hits; ++i) {
      hitTimes.push_back(timeMicros([&] { return library.categories(1); }, ok));
    }
    const double b3 = median(hitTimes);
    figures.push_back({"B3", "the same read answered from the HTTP cache", "us", b3, b2, b2 / b3,
                       ">= 5x faster", b2 / b3 >= 5});

    // B4: bursts of calls in flight at once, interleaved with raw bursts of
    // the same URLs (the URLs the provider builds for pages 1..N).
    std::vector<std::string> pageUrls;
    for (int page = 1; page <= o.inFlight; ++page) {
      pageUrls.push_back(emulator.url() +
                         "/api/v2/help_center/en-us/articles.json?include=sections,categories,"
                         "users&sort_by=created_at&sort_order=desc&per_page=1&page=" +
                         std::to_string(page));
    }
    std::vector<double> libRates;
    std::vector<double> rawRates;
    for (int i = 0; i < o.bursts; ++i) {
      const double rawMicros = timeMicros([&] { return raw.burst(pageUrls); }, ok);
      library.clearCache();
      const double libMicros = timeMicros([&] { return library.flatArticlePages(o.inFlight); }, ok);
      rawRates.push_back(o.inFlight / (rawMicros / 1e6));
      libRates.push_back(o.inFlight / (libMicros / 1e6));
    }
    const double b4 = median(libRates);
    const double b4raw = median(rawRates);
    figures.push_back({"B4", std::to_string(o.inFlight) + " calls in flight at once", "calls/s", b4,
                       b4raw, b4 / b4raw, ">= 0.8x", b4 / b4raw >= 0.8});
  }
  if (o.requestRounds > 0) {
    RequestWireFigures requests(emulator.url(), dataDir / "requests", o.requestRounds, o.quartiles);
    for (auto& f : requests.measure(ok)) figures.push_back(std::move(f));
  }
  std::filesystem::remove_all(dataDir);
  emulator.stop();

  if (!o.b1File.empty()) {
    const auto parse = readParseFigures(o.b1File, o.quartiles);
    if (parse.size() != 2) std::cerr << "warning: no B1/B5 figures in " << o.b1File << "\n";
    figures.insert(figures.end(), parse.begin(), parse.end());
  }
  if (!o.m1File.empty()) {
    if (auto m1 = readM1(o.m1File)) {
      figures.push_back(*m1);
    } else {
      std::cerr << "warning: no M1 figure in " << o.m1File << "\n";
    }
  }

  // B1 … B8, then M1.
  std::stable_sort(figures.begin(), figures.end(),
                   [](const Figure& a, const Figure& b) { return a.id < b.id; });
  std::printf("\n%-3s  %-52s %12s %12s %8s  %-13s %s\n", "id", "measures", "velmaro", "baseline",
              "ratio", "target", "");
  boost::json::array json;
  for (const auto& f : figures) {
    std::printf("%-3s  %-52s %9.1f %-2s %9.1f %-2s %7.2fx  %-13s %s\n", f.id.c_str(),
                f.measures.c_str(), f.value, f.unit == "calls/s" ? "/s" : f.unit.c_str(),
                f.baseline, f.unit == "calls/s" ? "/s" : f.unit.c_str(), f.ratio, f.target.c_str(),
                f.met ? "met" : "MISSED");
    json.push_back({{"id", f.id},
                    {"measures", f.measures},
                    {"unit", f.unit},
                    {"velmaro", f.value},
                    {"baseline", f.baseline},
                    {"ratio", f.ratio},
                    {"target", f.target},
                    {"met", f.met}});
  }
  if (!o.outFile.empty()) {
    std::ofstream out(o.outFile);
    out << boost::json::serialize(boost::json::object{{"figures", json}}) << "\n";
  }
  if (!ok) std::cerr << "warning: some calls failed during the run; figures may be off\n";
  curl_global_cleanup();
  // A missed target fails the run, so that a script can tell.
  const bool allMet =
      std::all_of(figures.begin(), figures.end(), [](const Figure& f) { return f.met; });
  return ok && allMet ? 0 : 1;
}
