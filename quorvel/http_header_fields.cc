#include "quorvel/http_header_fields.h"

#include <algorithm>

namespace quorvel {
namespace {

// ASCII only, as header names are: no locale lookup for every character of
// every comparison.
constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

bool CaseInsensitiveLess::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return lower(x) < lower(y); });
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return lower(x) == lower(y); });
}

HttpHeaderFields::HttpHeaderFields(std::initializer_list<value_type> fields) {
  fields_.reserve(fields.size());
  for (const auto& [name, value] : fields) emplace(name, value);
}

HttpHeaderFields::iterator HttpHeaderFields::find(std::string_view name) {
  // A handful of fields: a scan that mostly compares lengths beats a search.
  return std::find_if(fields_.begin(), fields_.end(), [name](const value_type& field) {
    return equalsIgnoringCase(field.first, name);
  });
}

HttpHeaderFields::const_iterator HttpHeaderFields::find(std::string_view name) const {
  return std::find_if(fields_.begin(), fields_.end(), [name](const value_type& field) {
    return equalsIgnoringCase(field.first, name);
  });
}

HttpHeaderFields::iterator HttpHeaderFields::position(std::string_view name) {
  return std::lower_bound(fields_.begin(), fields_.end(), name,
                          [](const value_type& field, std::string_view wanted) {
                            return CaseInsensitiveLess{}(field.first, wanted);
                          });
}

std::pair<HttpHeaderFields::iterator, bool> HttpHeaderFields::emplace(std::string name,
                                                                      std::string value) {
  const auto at = position(name);
  if (at != fields_.end() && equalsIgnoringCase(at->first, name)) return {at, false};
  return {fields_.emplace(at, std::move(name), std::move(value)), true};
}

std::pair<HttpHeaderFields::iterator, bool> HttpHeaderFields::insert_or_assign(
    std::string_view name, std::string value) {
  const auto at = position(name);
  if (at != fields_.end() && equalsIgnoringCase(at->first, name)) {
    at->second = std::move(value);
    return {at, false};
  }
  return {fields_.emplace(at, std::string(name), std::move(value)), true};
}

std::string& HttpHeaderFields::operator[](std::string_view name) {
  return emplace(std::string(name), std::string()).first->second;
}

std::size_t HttpHeaderFields::erase(std::string_view name) {
  const auto at = find(name);
  if (at == fields_.end()) return 0;
  fields_.erase(at);
  return 1;
}

}  // namespace quorvel
