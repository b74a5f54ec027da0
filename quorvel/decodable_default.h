#pragma once

#include <concepts>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"

namespace quorvel {

// A record decodable from the whole settings document, with a value for when
// there is no document (`default` is a keyword in C++).
template <class T>
concept DecodableDefault = requires(const boost::json::value& wholeDocument) {
  { T::decode(wholeDocument) } -> std::same_as<platform::Result<T>>;
  { T::defaultValue() } -> std::same_as<T>;
};

}  // namespace quorvel
