#include "velmaro/core/parse_arena.h"

#include <algorithm>

namespace velmaro {

namespace {

// Below this the first block on the stack of the caller did as well.
constexpr std::size_t kMinBytes = 4096;

// The calling thread's kept buffer; empty while a ParseArena holds it.
thread_local std::unique_ptr<unsigned char[]> keptBytes;
thread_local std::size_t keptSize = 0;

}  // namespace

ParseArena::Buffer ParseArena::take(std::size_t answerBytes) {
  const std::size_t wanted = std::clamp(answerBytes * 2 + kMinBytes, kMinBytes, kMaxKeptBytes);
  Buffer buffer{std::move(keptBytes), keptSize};
  keptSize = 0;
  if (buffer.size < wanted) {
    // Not value-initialised: the parser writes before it reads.
    buffer.bytes.reset(new unsigned char[wanted]);
    buffer.size = wanted;
  }
  return buffer;
}

ParseArena::ParseArena(std::size_t answerBytes)
    : buffer_(take(answerBytes)), resource_(buffer_.bytes.get(), buffer_.size) {}

ParseArena::~ParseArena() {
  resource_.release();
  // A nested arena may have put back a smaller buffer meanwhile: keep the larger.
  if (buffer_.size > keptSize) {
    keptBytes = std::move(buffer_.bytes);
    keptSize = buffer_.size;
  }
}

}  // namespace velmaro
