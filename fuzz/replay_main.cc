// Runs a fuzz target without libFuzzer: every file in the directories named
// on the command line (or the files named), in name order, goes through
// LLVMFuzzerTestOneInput once. A missing directory is skipped; no input at
// all is a failure, so that a misnamed seed folder does not pass unseen. A
// crash or a sanitizer report is the failure of the test that runs this.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> inputsIn(const fs::path& place) {
  std::error_code ec;
  if (fs::is_regular_file(place, ec)) return {place};
  std::vector<fs::path> files;
  for (fs::directory_iterator it(place, ec), end; !ec && it != end; it.increment(ec)) {
    const auto name = it->path().filename().string();
    if (it->is_regular_file(ec) && !name.starts_with(".")) files.push_back(it->path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  // A buffer of exactly the input's size, so that AddressSanitizer sees a
  // read past its end.
  auto data = std::make_unique<std::uint8_t[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), data.get());
  std::fprintf(stderr, "replaying %s (%zu bytes)\n", file.c_str(), bytes.size());
  LLVMFuzzerTestOneInput(data.get(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (LLVMFuzzerInitialize != nullptr) LLVMFuzzerInitialize(&argc, &argv);
  std::size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& file : inputsIn(argv[i])) {
      replay(file);
      ++count;
    }
  }
  std::printf("%zu inputs replayed\n", count);
  return count > 0 ? 0 : 1;
}
