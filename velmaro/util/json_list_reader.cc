#include "velmaro/util/json_list_reader.h"

#include <cstdint>
#include <string>

#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/value_stack.hpp>

namespace velmaro {

namespace {

namespace json = boost::json;
using json::error_code;
using json::string_view;

// The events of one parse. Depth 1 is inside the top-level object, depth 2
// inside the array under the key. Only the `wanted`-th array under the key
// (counting from 0) has its elements built, in `stack`, one at a time.
class ListHandler {
 public:
  static constexpr std::size_t max_object_size = std::size_t(-1);
  static constexpr std::size_t max_array_size = std::size_t(-1);
  static constexpr std::size_t max_key_size = std::size_t(-1);
  static constexpr std::size_t max_string_size = std::size_t(-1);

  ListHandler(std::string_view key, std::size_t wanted, const JsonListReader::Element* element)
      : key_(key), wanted_(wanted), element_(element) {}

  // Arrays under the key seen, and the elements of the last value under it
  // (0 when that value is not an array).
  std::size_t arrays = 0;
  std::size_t lastElements = 0;

  bool on_document_begin(error_code&) { return true; }
  bool on_document_end(error_code&) { return true; }

  bool on_object_begin(error_code&) { return open(); }
  bool on_object_end(std::size_t n, error_code&) {
    return close([&] { stack_.push_object(n); });
  }
  bool on_array_begin(error_code&) {
    if (depth_ == 1 && atKey_) {
      ++depth_;
      inList_ = true;
      return true;
    }
    return open();
  }
  bool on_array_end(std::size_t n, error_code&) {
    if (depth_ == 2 && inList_) {
      --depth_;
      inList_ = false;
      lastElements = n;
      ++arrays;
      return true;
    }
    return close([&] { stack_.push_array(n); });
  }

  bool on_key_part(string_view s, std::size_t, error_code&) {
    if (building()) {
      stack_.push_chars(s);
    } else if (depth_ == 1) {
      pendingKey_.append(s.data(), s.size());
    }
    return true;
  }
  bool on_key(string_view s, std::size_t, error_code&) {
    if (building()) {
      stack_.push_key(s);
    } else if (depth_ == 1) {
      pendingKey_.append(s.data(), s.size());
      atKey_ = pendingKey_ == key_;
      pendingKey_.clear();
    }
    return true;
  }

  bool on_string_part(string_view s, std::size_t, error_code&) {
    if (building()) stack_.push_chars(s);
    return true;
  }
  bool on_string(string_view s, std::size_t, error_code&) {
    return scalar([&] { stack_.push_string(s); });
  }
  bool on_number_part(string_view, error_code&) { return true; }
  bool on_int64(std::int64_t i, string_view, error_code&) {
    return scalar([&] { stack_.push_int64(i); });
  }
  bool on_uint64(std::uint64_t u, string_view, error_code&) {
    return scalar([&] { stack_.push_uint64(u); });
  }
  bool on_double(double d, string_view, error_code&) {
    return scalar([&] { stack_.push_double(d); });
  }
  bool on_bool(bool b, error_code&) {
    return scalar([&] { stack_.push_bool(b); });
  }
  bool on_null(error_code&) {
    return scalar([&] { stack_.push_null(); });
  }
  bool on_comment_part(string_view, error_code&) { return true; }
  bool on_comment(string_view, error_code&) { return true; }

 private:
  // Inside an element of the wanted array, building its value.
  bool building() const { return elementOpen_; }
  bool wanted() const { return inList_ && arrays == wanted_ && element_ != nullptr; }

  bool open() {
    if (depth_ == 2 && inList_ && wanted()) startElement();
    valueAtDepthOne();
    ++depth_;
    return true;
  }

  // A value under the key that is no array: the key holds no list.
  void valueAtDepthOne() {
    if (depth_ != 1) return;
    if (atKey_) lastElements = 0;
    atKey_ = false;
  }

  template <class Push>
  bool close(Push push) {
    --depth_;
    if (!elementOpen_) return true;
    push();
    if (depth_ == 2) finishElement();
    return true;
  }

  template <class Push>
  bool scalar(Push push) {
    valueAtDepthOne();
    if (depth_ == 2 && inList_ && wanted()) {
      startElement();
      push();
      finishElement();
    } else if (building()) {
      push();
    }
    return true;
  }

  // The arena is rewound for each element, back to its first block: a small
  // element costs no allocation of its own.
  void startElement() {
    arena_.release();
    stack_.reset(&arena_);
    elementOpen_ = true;
  }

  void finishElement() {
    elementOpen_ = false;
    const json::value value = stack_.release();
    static const json::object kEmpty;
    (*element_)(value.is_object() ? value.get_object() : kEmpty);
  }

  std::string_view key_;
  std::size_t wanted_;
  const JsonListReader::Element* element_;
  int depth_ = 0;
  bool atKey_ = false;
  bool inList_ = false;
  bool elementOpen_ = false;
  std::string pendingKey_;
  unsigned char firstBlock_[4096];
  json::monotonic_resource arena_{firstBlock_, sizeof firstBlock_};
  json::value_stack stack_;
};

// Parses the whole document with `handler`; false when it is not valid JSON.
bool parse(json::basic_parser<ListHandler>& parser, std::string_view document) {
  error_code ec;
  const auto used = parser.write_some(false, document.data(), document.size(), ec);
  return !ec && used == document.size();
}

}  // namespace

bool JsonListReader::read(std::string_view document, std::string_view key, const Reserve& reserve,
                          const Element& element) {
  json::basic_parser<ListHandler> counting(json::parse_options{}, key, 0, nullptr);
  if (!parse(counting, document)) return false;
  const auto& shape = counting.handler();
  reserve(shape.lastElements);
  if (shape.lastElements == 0) return true;
  json::basic_parser<ListHandler> reading(json::parse_options{}, key, shape.arrays - 1, &element);
  return parse(reading, document);
}

}  // namespace velmaro
