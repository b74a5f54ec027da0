#pragma once

#include <algorithm>
#include <optional>
#include <vector>

namespace velmaro {

// A small last-in-first-out stack. Not synchronized.
template <class T>
class QVKStack {
 public:
  void push(T value) { internalArray.push_back(std::move(value)); }
  // The last element, removed; nothing (and no change) when empty.
  std::optional<T> pop() {
    if (internalArray.empty()) return std::nullopt;
    T last = std::move(internalArray.back());
    internalArray.pop_back();
    return last;
  }
  bool contains(const T& value) const {
    return std::find(internalArray.begin(), internalArray.end(), value) != internalArray.end();
  }
  bool empty() const { return internalArray.empty(); }

  std::vector<T> internalArray;
};

}  // namespace velmaro
