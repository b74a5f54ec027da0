#pragma once

#include <cstddef>
#include <memory>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/storage_ptr.hpp>

namespace velmaro {

// The memory one answer's JSON is parsed into, let go at once when the
// records are made. Its first block is the calling thread's scratch buffer,
// kept between parses: a long answer then lands on pages already mapped.
// Fresh blocks from the heap come as new mappings (they are past the
// allocator's mmap threshold) and fault page by page; a 550 KB article list
// paid about 150 faults per parse that way, more than the records cost.
//
// Any thread; a ParseArena stays on the thread that made it. A nested one on
// the same thread finds the buffer taken and starts without it.
class ParseArena {
 public:
  // Kept per thread at most; a larger answer's excess comes from the heap.
  static constexpr std::size_t kMaxKeptBytes = 4 * 1024 * 1024;

  // Room for an answer of `answerBytes` (its tree takes about twice that).
  explicit ParseArena(std::size_t answerBytes);
  ~ParseArena();
  ParseArena(const ParseArena&) = delete;
  ParseArena& operator=(const ParseArena&) = delete;

  boost::json::storage_ptr storage() { return &resource_; }

 private:
  struct Buffer {
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t size = 0;
  };
  static Buffer take(std::size_t answerBytes);

  Buffer buffer_;
  boost::json::monotonic_resource resource_;
};

}  // namespace velmaro
