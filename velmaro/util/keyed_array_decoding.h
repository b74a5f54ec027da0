#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quorvel/platform/result.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

// Strict decoding of an array of objects under a key: every element must be
// an object that T::decode accepts, else the whole array fails.
class KeyedArrayDecoding {
 public:
  template <class T>
  static quorvel::platform::Result<std::vector<T>> decodeObjects(
      const KeyedDecodingContainer& container, std::string_view key) {
    QUORVEL_ASSIGN_OR_RETURN(const auto elements, container.decodeArray(key));
    std::vector<T> records;
    records.reserve(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
      if (!elements[i].is_object()) {
        return KeyedDecodingContainer::typeMismatch(elementPath(container, key, i), "a dictionary");
      }
      QUORVEL_ASSIGN_OR_RETURN(const auto element, KeyedDecodingContainer::root(elements[i]));
      QUORVEL_ASSIGN_OR_RETURN(auto record, T::decode(element));
      records.push_back(std::move(record));
    }
    return records;
  }

 private:
  static std::string elementPath(const KeyedDecodingContainer& container, std::string_view key,
                                 std::size_t index) {
    std::string path = container.codingPath();
    if (!path.empty()) path += '.';
    return path.append(key).append("[").append(std::to_string(index)).append("]");
  }
};

}  // namespace velmaro
