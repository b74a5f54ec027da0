#include "velmaro/util/keyed_decoding_container.h"

#include <boost/json/parse.hpp>

namespace velmaro {

using quorvel::platform::Error;
using quorvel::platform::Result;

namespace {

Error decodingError(long code, const std::string& description) {
  return Error::withDescription(KeyedDecodingContainer::kErrorDomain, code, description);
}

}  // namespace

Error KeyedDecodingContainer::typeMismatch(const std::string& path, const char* expected) {
  return decodingError(kTypeMismatch, "Expected to decode " + std::string(expected) + " at \"" +
                                          path + "\" but found another type.");
}

Result<boost::json::value> KeyedDecodingContainer::parse(std::string_view bytes) {
  boost::system::error_code ec;
  auto value = boost::json::parse(bytes, ec);
  if (ec) {
    return decodingError(kDataCorrupted,
                         "The given data was not valid JSON: " + ec.message() + ".");
  }
  return value;
}

Result<KeyedDecodingContainer> KeyedDecodingContainer::root(const boost::json::value& document) {
  if (!document.is_object()) return typeMismatch("", "a dictionary");
  return KeyedDecodingContainer(&document.get_object(), "");
}

std::string KeyedDecodingContainer::pathTo(std::string_view key) const {
  return path_.empty() ? std::string(key) : path_ + "." + std::string(key);
}

Result<const boost::json::value*> KeyedDecodingContainer::require(std::string_view key) const {
  const auto* value = object_->if_contains(key);
  if (value == nullptr) {
    return decodingError(kKeyNotFound, "No value associated with key \"" + pathTo(key) + "\".");
  }
  if (value->is_null()) {
    return decodingError(kValueNotFound,
                         "Expected a value at \"" + pathTo(key) + "\" but found null instead.");
  }
  return value;
}

Result<KeyedDecodingContainer> KeyedDecodingContainer::nested(std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  if (!(*value)->is_object()) return typeMismatch(pathTo(key), "a dictionary");
  return KeyedDecodingContainer(&(*value)->get_object(), pathTo(key));
}

Result<bool> KeyedDecodingContainer::decodeBool(std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  if (!(*value)->is_bool()) return typeMismatch(pathTo(key), "a boolean");
  return (*value)->get_bool();
}

Result<std::int64_t> KeyedDecodingContainer::decodeInt64(std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  const auto& v = **value;
  if (v.is_int64()) return v.get_int64();
  if (v.is_uint64() && v.get_uint64() <= static_cast<std::uint64_t>(INT64_MAX)) {
    return static_cast<std::int64_t>(v.get_uint64());
  }
  // A number written as 1024.0 is still the integer 1024; 1024.5 is not.
  if (v.is_double()) {
    const double d = v.get_double();
    if (d >= -9.2e18 && d <= 9.2e18 && static_cast<double>(static_cast<std::int64_t>(d)) == d) {
      return static_cast<std::int64_t>(d);
    }
  }
  return typeMismatch(pathTo(key), "a 64-bit integer");
}

Result<std::string> KeyedDecodingContainer::decodeString(std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  if (!(*value)->is_string()) return typeMismatch(pathTo(key), "a string");
  return std::string((*value)->get_string());
}

Result<std::vector<boost::json::value>> KeyedDecodingContainer::decodeArray(
    std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  if (!(*value)->is_array()) return typeMismatch(pathTo(key), "an array");
  const auto& array = (*value)->get_array();
  return std::vector<boost::json::value>(array.begin(), array.end());
}

Result<std::vector<std::string>> KeyedDecodingContainer::decodeStringArray(
    std::string_view key) const {
  auto value = require(key);
  if (!value) return value.error();
  if (!(*value)->is_array()) return typeMismatch(pathTo(key), "an array");
  std::vector<std::string> strings;
  const auto& array = (*value)->get_array();
  strings.reserve(array.size());
  for (std::size_t i = 0; i < array.size(); ++i) {
    if (!array[i].is_string()) {
      return typeMismatch(pathTo(key) + "[" + std::to_string(i) + "]", "a string");
    }
    strings.emplace_back(array[i].get_string());
  }
  return strings;
}

Result<std::optional<std::string>> KeyedDecodingContainer::decodeStringIfPresent(
    std::string_view key) const {
  const auto* value = object_->if_contains(key);
  if (value == nullptr || value->is_null()) return std::optional<std::string>();
  if (!value->is_string()) return typeMismatch(pathTo(key), "a string");
  return std::optional<std::string>(std::string(value->get_string()));
}

}  // namespace velmaro
