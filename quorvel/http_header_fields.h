#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvel {

// Orders header names without regard to ASCII case, so that "etag" and
// "ETag" sort (and are found) as one name.
struct CaseInsensitiveLess {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const;
};

bool equalsIgnoringCase(std::string_view a, std::string_view b);

// Header fields of a response: one value per name, names compared without
// regard to case, the first spelling kept, in name order.
//
// A response has a handful of fields, read and copied once or twice on every
// answer: kept in one vector (a lookup compares lengths first), they cost an
// allocation where a tree costs one a field. It reads like the map it stands
// for; a name reached through an iterator must not be changed.
class HttpHeaderFields {
 public:
  using value_type = std::pair<std::string, std::string>;
  using iterator = std::vector<value_type>::iterator;
  using const_iterator = std::vector<value_type>::const_iterator;

  HttpHeaderFields() = default;
  HttpHeaderFields(std::initializer_list<value_type> fields);

  iterator begin() { return fields_.begin(); }
  iterator end() { return fields_.end(); }
  const_iterator begin() const { return fields_.begin(); }
  const_iterator end() const { return fields_.end(); }
  std::size_t size() const { return fields_.size(); }
  bool empty() const { return fields_.empty(); }
  void reserve(std::size_t count) { fields_.reserve(count); }
  void clear() { fields_.clear(); }

  iterator find(std::string_view name);
  const_iterator find(std::string_view name) const;
  bool contains(std::string_view name) const { return find(name) != end(); }
  std::size_t count(std::string_view name) const { return contains(name) ? 1 : 0; }

  // Adds the field unless one of that name is there (that one is kept).
  std::pair<iterator, bool> emplace(std::string name, std::string value);
  // Adds the field, or replaces the value of the one of that name (whose
  // spelling stays).
  std::pair<iterator, bool> insert_or_assign(std::string_view name, std::string value);
  std::string& operator[](std::string_view name);
  std::size_t erase(std::string_view name);

  friend bool operator==(const HttpHeaderFields& a, const HttpHeaderFields& b) {
    return a.fields_ == b.fields_;
  }

 private:
  // Where a field of this name is, or would go.
  iterator position(std::string_view name);

  std::vector<value_type> fields_;  // in CaseInsensitiveLess order of names
};

}  // namespace quorvel
