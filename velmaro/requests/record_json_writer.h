#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <boost/json/object.hpp>
#include <boost/json/value_from.hpp>

#include "velmaro/util/qvk_date_util.h"

namespace velmaro {

// Builds the dictionary a request record writes back: a value that is absent
// leaves its key out, dates become the wire timestamp text.
class RecordJsonWriter {
 public:
  template <class T>
  RecordJsonWriter& put(std::string_view key, const std::optional<T>& value) {
    if (value) json_[key] = boost::json::value_from(*value);
    return *this;
  }
  template <class T>
  RecordJsonWriter& put(std::string_view key, const T& value) {
    json_[key] = boost::json::value_from(value);
    return *this;
  }

  boost::json::object take() { return std::move(json_); }

  // The wire text of a date, or nothing.
  static std::optional<std::string> dateText(
      const std::optional<std::chrono::system_clock::time_point>& date) {
    if (!date) return std::nullopt;
    return QVKDateUtil::stringFromDate(*date);
  }

 private:
  boost::json::object json_;
};

}  // namespace velmaro
