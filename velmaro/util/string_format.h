#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <boost/json/value.hpp>

#include "quorvel/platform/error.h"

namespace velmaro {

// The text form of a value where a message format has "%@": strings as they
// are, numbers in decimal, JSON serialised, errors with domain and code, an
// absent value as "(null)".
class Describe {
 public:
  static std::string of(std::string_view s) { return std::string(s); }
  static std::string of(const std::string& s) { return s; }
  static std::string of(const char* s) { return s != nullptr ? std::string(s) : "(null)"; }
  static std::string of(bool b) { return b ? "1" : "0"; }
  static std::string of(const boost::json::value& v);
  static std::string of(const quorvel::platform::Error& e) { return e.debugDescription(); }
  template <class T>
  requires std::is_arithmetic_v<T>
  static std::string of(T n) { return std::to_string(n); }
  template <class T>
  static std::string of(const std::optional<T>& v) {
    return v ? of(*v) : std::string("(null)");
  }
  template <class T>
  static std::string of(const std::shared_ptr<T>& p) {
    return p ? of(*p) : std::string("(null)");
  }
  template <class R, class... A>
  static std::string of(const std::function<R(A...)>& f) {
    return f ? std::string("<callback>") : std::string("(null)");
  }
  template <class T>
  static std::string of(const std::vector<T>& list) {
    std::string text = "(\n";
    for (std::size_t i = 0; i < list.size(); ++i) {
      text += "    " + of(list[i]) + (i + 1 < list.size() ? ",\n" : "\n");
    }
    return text + ")";
  }
};

// printf-style formatting of the system's message formats. Conversions are
// taken in order and each consumes one argument: "%@" and "%s" insert the
// argument's text form; "%d", "%i", "%ld", "%li", "%lld", "%u", "%lu" an
// integer; "%f" and "%.Nf" a floating-point number; "%c" a character; "%%" a
// percent sign. Missing arguments leave the conversion as written.
class StringFormat {
 public:
  template <class... Args>
  static std::string format(std::string_view format, const Args&... args) {
    std::vector<Argument> list;
    list.reserve(sizeof...(Args));
    (list.push_back(argument(args)), ...);
    return apply(format, list);
  }

 private:
  struct Argument {
    std::string text;  // for %@ and %s
    std::optional<long double> number;
  };
  template <class T>
  static Argument argument(const T& value) {
    Argument a{Describe::of(value), std::nullopt};
    if constexpr (std::is_arithmetic_v<T>) a.number = static_cast<long double>(value);
    return a;
  }
  static std::string apply(std::string_view format, const std::vector<Argument>& args);
};

}  // namespace velmaro
