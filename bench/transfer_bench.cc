// A 50 MB upload from a file and download to a file over loopback, through
// the providers and with raw libcurl doing the same transfer in the same
// iteration. Counters: the library's throughput as a ratio of raw libcurl's
// (target >= 0.9) and the growth of the process's peak resident memory during
// the library's streaming upload (target < 8 MB).
//
// The server is in this process (cpp-httplib, streaming both ways, so it
// holds no copy of the file either): its memory is counted too.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <httplib.h>

#include "bench/process_status.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "velmaro/attachments/qvk_attachment_provider.h"
#include "velmaro/attachments/qvk_upload_provider.h"
#include "velmaro/core/support.h"

namespace {

constexpr std::size_t kFileBytes = 50u * 1000u * 1000u;
constexpr std::size_t kChunk = 1u << 20;

using velmaro::bench::statusKb;

// Starts counting the peak resident memory again from the present.
void resetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

class LocalServer {
 public:
  LocalServer() : chunk_(kChunk, 'x') {
    server_.Post("/api/mobile/uploads.json", [](const httplib::Request&, httplib::Response& res,
                                                const httplib::ContentReader& read) {
      std::size_t received = 0;
      read([&](const char*, std::size_t length) {
        received += length;
        return true;
      });
      res.status = 201;
      res.set_content(R"({"upload":{"token":")" + std::to_string(received) + R"("}})",
                      "application/json");
    });
    server_.Get("/blob", [this](const httplib::Request&, httplib::Response& res) {
      res.set_content_provider(
          kFileBytes, "application/octet-stream",
          [this](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
            const std::size_t n = std::min({length, kChunk, kFileBytes - offset});
            return sink.write(chunk_.data(), n);
          });
    });
    port_ = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    for (int i = 0; i < 2000 && !server_.is_running(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  ~LocalServer() {
    server_.stop();
    thread_.join();
  }
  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

 private:
  std::string chunk_;
  httplib::Server server_;
  int port_ = 0;
  std::thread thread_;
};

class Raw {
 public:
  Raw() : easy_(curl_easy_init()) {
    curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &Raw::write);
    headers_ = curl_slist_append(headers_, "Expect:");
    headers_ = curl_slist_append(headers_, "Content-Type: application/octet-stream");
    curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headers_);
  }
  ~Raw() {
    curl_slist_free_all(headers_);
    curl_easy_cleanup(easy_);
  }

  bool upload(const std::string& url, const std::filesystem::path& file) {
    std::FILE* in = std::fopen(file.c_str(), "rb");
    curl_easy_setopt(easy_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy_, CURLOPT_POST, 1L);
    curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(kFileBytes));
    curl_easy_setopt(easy_, CURLOPT_READDATA, in);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, nullptr);
    const bool ok = curl_easy_perform(easy_) == CURLE_OK;
    std::fclose(in);
    return ok;
  }

  bool download(const std::string& url, const std::filesystem::path& file) {
    std::FILE* out = std::fopen(file.c_str(), "wb");
    curl_easy_setopt(easy_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy_, CURLOPT_HTTPGET, 1L);
    curl_easy_setopt(easy_, CURLOPT_WRITEDATA, out);
    const bool ok = curl_easy_perform(easy_) == CURLE_OK;
    std::fclose(out);
    return ok;
  }

 private:
  static std::size_t write(char* data, std::size_t size, std::size_t count, void* out) {
    if (out == nullptr) return size * count;
    return std::fwrite(data, size, count, static_cast<std::FILE*>(out)) * size;
  }

  CURL* easy_;
  curl_slist* headers_ = nullptr;
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
    uploads_ = std::make_unique<velmaro::QVKUploadProvider>(core_);
    attachments_ = std::make_unique<velmaro::QVKAttachmentProvider>(core_);
  }
  ~Library() {
    core_->shutdown();
    loop_->runPending();
  }

  bool upload(const std::filesystem::path& file) {
    std::optional<bool> ok;
    uploads_->uploadFile(file.string(), "big.bin", "application/octet-stream", {},
                         [&](auto response, auto) { ok = response.has_value(); });
    loop_->runUntil([&] { return ok.has_value(); }, std::chrono::seconds(60));
    return ok.value_or(false);
  }

  bool download(const std::string& url, const std::filesystem::path& file) {
    std::optional<bool> ok;
    velmaro::QVKAttachmentProvider::DownloadOptions options;
    options.maxBytes = 2 * kFileBytes;
    attachments_->downloadAttachment(url, file.string(), options,
                                     [&](auto path, auto) { ok = path.has_value(); });
    loop_->runUntil([&] { return ok.has_value(); }, std::chrono::seconds(60));
    return ok.value_or(false);
  }

 private:
  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<quorvel::Quorvel> core_;
  std::unique_ptr<velmaro::QVKUploadProvider> uploads_;
  std::unique_ptr<velmaro::QVKAttachmentProvider> attachments_;
};

struct Setup {
  Setup() : folder(std::filesystem::temp_directory_path() / "velmaro-transfer-bench") {
    std::filesystem::create_directories(folder);
    source = folder / "source.bin";
    std::ofstream out(source, std::ios::binary);
    const std::string chunk(kChunk, 'y');
    for (std::size_t written = 0; written < kFileBytes; written += kChunk) {
      out.write(chunk.data(), static_cast<std::streamsize>(std::min(kChunk, kFileBytes - written)));
    }
  }
  ~Setup() {
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
  }
  std::filesystem::path folder;
  std::filesystem::path source;
};

double seconds(const std::function<bool()>& transfer, bool& ok) {
  const auto start = std::chrono::steady_clock::now();
  ok = transfer() && ok;
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Each iteration: a raw transfer and the library's, in alternating order.
template <class RawTransfer, class LibraryTransfer>
void compare(benchmark::State& state, RawTransfer raw, LibraryTransfer library,
             bool measureMemory) {
  double rawTotal = 0;
  double libraryTotal = 0;
  long peakGrowthKb = 0;
  bool ok = true;
  bool rawFirst = true;
  for (auto _ : state) {
    if (rawFirst) rawTotal += seconds(raw, ok);
    resetPeak();
    const long before = statusKb("VmRSS:");
    const double took = seconds(library, ok);
    if (measureMemory) peakGrowthKb = std::max(peakGrowthKb, statusKb("VmHWM:") - before);
    if (!rawFirst) rawTotal += seconds(raw, ok);
    libraryTotal += took;
    state.SetIterationTime(took);
    rawFirst = !rawFirst;
  }
  if (!ok) state.SkipWithError("a transfer failed");
  const double megabytes = static_cast<double>(kFileBytes) / 1e6 * state.iterations();
  state.counters["library_MBps"] = megabytes / libraryTotal;
  state.counters["raw_MBps"] = megabytes / rawTotal;
  state.counters["ratio"] = rawTotal / libraryTotal;
  if (measureMemory) state.counters["peak_rss_growth_MB"] = peakGrowthKb / 1024.0;
}

void BM_UploadFile(benchmark::State& state) {
  Setup setup;
  LocalServer server;
  Library library(server.url(), setup.folder / "data");
  Raw raw;
  const auto url = server.url() + "/api/mobile/uploads.json?filename=big.bin";
  compare(
      state, [&] { return raw.upload(url, setup.source); },
      [&] { return library.upload(setup.source); }, true);
}

void BM_DownloadToFile(benchmark::State& state) {
  Setup setup;
  LocalServer server;
  Library library(server.url(), setup.folder / "data");
  Raw raw;
  const auto url = server.url() + "/blob";
  compare(
      state, [&] { return raw.download(url, setup.folder / "raw.bin"); },
      [&] { return library.download(url, setup.folder / "library.bin"); }, false);
}

BENCHMARK(BM_UploadFile)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DownloadToFile)->UseManualTime()->Iterations(10)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
