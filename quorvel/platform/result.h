#pragma once

#include <utility>
#include <variant>

#include "quorvel/platform/error.h"

namespace quorvel::platform {

// A value or the error that prevented it (std::expected arrives with C++23).
template <class T>
class Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}      // NOLINT: implicit
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}  // NOLINT: implicit

  bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  T& value() & { return std::get<0>(state_); }
  const T& value() const& { return std::get<0>(state_); }
  T&& value() && { return std::get<0>(std::move(state_)); }
  const Error& error() const { return std::get<1>(state_); }

  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }

 private:
  std::variant<T, Error> state_;
};

}  // namespace quorvel::platform

// Evaluates `expr` (a Result); on error returns the error from the enclosing
// function, otherwise moves the value into `lhs`.
#define QUORVEL_CONCAT_INNER(a, b) a##b
#define QUORVEL_CONCAT(a, b) QUORVEL_CONCAT_INNER(a, b)
#define QUORVEL_ASSIGN_OR_RETURN(lhs, expr) \
  QUORVEL_ASSIGN_OR_RETURN_IMPL(QUORVEL_CONCAT(quorvel_result_, __LINE__), lhs, expr)
#define QUORVEL_ASSIGN_OR_RETURN_IMPL(tmp, lhs, expr) \
  auto tmp = (expr);                                  \
  if (!tmp.ok()) return tmp.error();                  \
  lhs = std::move(tmp).value()
