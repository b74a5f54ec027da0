#include "velmaro/ticketforms/raw_json.h"

#include <cmath>
#include <limits>

namespace velmaro {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

bool isNumber(const boost::json::value& value) {
  return value.is_int64() || value.is_uint64() || value.is_double();
}

// Whether the double is a whole number equal to the unsigned one.
bool doubleEqualsUnsigned(double d, std::uint64_t u) {
  if (!(d >= 0.0 && d < kTwoTo64) || std::trunc(d) != d) return false;
  return static_cast<std::uint64_t>(d) == u;
}

}  // namespace

RawJson::Value RawJson::at(const boost::json::object& json, std::string_view key) {
  const auto* value = json.if_contains(key);
  if (value == nullptr) return std::nullopt;
  return boost::json::value(*value, boost::json::storage_ptr());
}

std::optional<std::string_view> RawJson::string(const Value& value) {
  if (!value || !value->is_string()) return std::nullopt;
  const auto& s = value->get_string();
  return std::string_view(s.data(), s.size());
}

std::optional<std::int64_t> RawJson::int64(const Value& value) {
  if (!value) return std::nullopt;
  return int64(*value);
}

std::optional<std::int64_t> RawJson::int64(const boost::json::value& value) {
  switch (value.kind()) {
    case boost::json::kind::int64:
      return value.get_int64();
    case boost::json::kind::uint64: {
      const auto u = value.get_uint64();
      if (u > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return std::nullopt;
      }
      return static_cast<std::int64_t>(u);
    }
    case boost::json::kind::double_: {
      const double d = value.get_double();
      // [-2^63, 2^63) holds exactly the doubles that convert without overflow.
      if (!(d >= -kTwoTo63 && d < kTwoTo63) || std::trunc(d) != d) return std::nullopt;
      return static_cast<std::int64_t>(d);
    }
    default:
      return std::nullopt;
  }
}

const boost::json::array* RawJson::array(const Value& value) {
  return (value && value->is_array()) ? &value->get_array() : nullptr;
}

bool RawJson::numericallyEqual(const boost::json::value& a, const boost::json::value& b) {
  if (!isNumber(a) || !isNumber(b)) return false;
  if (a.is_double() && b.is_double()) return a.get_double() == b.get_double();
  // An unsigned value above the signed range has no int64 form.
  if (a.is_uint64() && !int64(a)) {
    return b.is_uint64() ? a.get_uint64() == b.get_uint64()
                         : b.is_double() && doubleEqualsUnsigned(b.get_double(), a.get_uint64());
  }
  if (b.is_uint64() && !int64(b)) return numericallyEqual(b, a);
  const auto x = int64(a);
  const auto y = int64(b);
  return x && y && *x == *y;
}

}  // namespace velmaro
