#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "quorvel/platform/error.h"

namespace velmaro {

// An operation's argument as the validator sees it: absent, a string (which
// must not be empty), or anything else (always usable).
struct BoundValue {
  enum class Kind { null, string, other };
  Kind kind = Kind::null;
  std::string text;  // the string, or the value's description

  static BoundValue null() { return {}; }
  static BoundValue string(std::string s) { return {Kind::string, std::move(s)}; }
  static BoundValue other(std::string description) { return {Kind::other, std::move(description)}; }
};

// Argument names with their values, in the order the names were given.
using VariableBindings = std::vector<std::pair<std::string, BoundValue>>;

// Checks a provider operation's arguments before anything is sent.
class QVKValidator {
 public:
  static constexpr const char* kErrorDomain = "QVKParameterValidationErrorDomain";
  enum Code : long { kNull = 0, kEmptyString = 1 };

  // Nothing when every value is usable; otherwise the first failure found,
  // which is also logged at error level.
  static std::optional<quorvel::platform::Error> validateValues(const VariableBindings& bindings);

  // The bindings as text for the failed-validation log line.
  static std::string describe(const VariableBindings& bindings);
};

namespace detail {

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};
template <class T>
struct IsSharedPtr : std::false_type {};
template <class T>
struct IsSharedPtr<std::shared_ptr<T>> : std::true_type {};
template <class T>
struct IsFunction : std::false_type {};
template <class R, class... A>
struct IsFunction<std::function<R(A...)>> : std::true_type {};

std::string describeForBinding(const void* pointer);

template <class T>
BoundValue bind(const T& value) {
  if constexpr (std::is_same_v<T, std::nullptr_t>) {
    return BoundValue::null();
  } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
    if constexpr (std::is_pointer_v<T>) {
      if (value == nullptr) return BoundValue::null();
    }
    return BoundValue::string(std::string(std::string_view(value)));
  } else if constexpr (IsOptional<T>::value) {
    return value ? bind(*value) : BoundValue::null();
  } else if constexpr (IsSharedPtr<T>::value || std::is_pointer_v<T>) {
    return value ? BoundValue::other(describeForBinding(&*value)) : BoundValue::null();
  } else if constexpr (IsFunction<T>::value) {
    // A callback is kept as a copy in the real bindings; here only its presence matters.
    return value ? BoundValue::other("<callback>") : BoundValue::null();
  } else if constexpr (std::is_arithmetic_v<T>) {
    return BoundValue::other(std::to_string(value));
  } else {
    return BoundValue::other(describeForBinding(&value));
  }
}

std::vector<std::string> splitNames(std::string_view names);

}  // namespace detail

// The bindings of an operation's named arguments: `names` is split at commas
// only, so the blank after a comma stays part of the next name ("requestId,
// callback" names "requestId" and " callback"). An absent value is recorded as
// null, not dropped. Exactly as many values are read as there are names.
template <class... Args>
VariableBindings qvk_NilSafeNSDictionaryOfVariableBindings(std::string_view names,
                                                           const Args&... values) {
  const auto split = detail::splitNames(names);
  std::vector<BoundValue> bound{detail::bind(values)...};
  VariableBindings bindings;
  for (std::size_t i = 0; i < split.size(); ++i) {
    bindings.emplace_back(split[i], i < bound.size() ? bound[i] : BoundValue::null());
  }
  return bindings;
}

}  // namespace velmaro
