#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include <boost/json/object.hpp>

namespace velmaro {

// Reads the array under one key of a JSON object document element by
// element, without building the whole document: each element is parsed into
// a small arena that is reset before the next, so a list answer costs its
// bytes and the records made from them, not also a tree of every value (that
// tree measured about 3.5 times the bytes of a list of small records).
// Runs on the calling thread and keeps nothing between calls.
class JsonListReader {
 public:
  using Reserve = std::function<void(std::size_t)>;
  using Element = std::function<void(const boost::json::object&)>;

  // Calls `reserve` once with the number of elements, then hands each element
  // of the array under the top-level `key` to `element` in order (one that is
  // not an object as an empty object). A document that is not an object, or
  // whose key is missing or not an array, hands none; of repeated keys the
  // last counts, as in a parse of the whole document. Returns false, with
  // nothing handed, when the document is not valid JSON.
  //
  // The document is parsed twice: first to count and validate, then to hand
  // the elements, so that the caller reserves its records exactly once (a
  // vector grown by doubling peaks at three times its records).
  static bool read(std::string_view document, std::string_view key, const Reserve& reserve,
                   const Element& element);
};

}  // namespace velmaro
