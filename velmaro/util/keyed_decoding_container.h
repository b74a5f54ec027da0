#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"

namespace velmaro {

// Strict reading of a JSON object by key: a missing key, a JSON null or a
// value of the wrong type is an error naming the key's full path, and there
// is no per-field fallback. Used by the records that must decode whole or not
// at all (settings, the article tree).
class KeyedDecodingContainer {
 public:
  static constexpr const char* kErrorDomain = "Velmaro.DecodingError";
  enum Code : long { kTypeMismatch = 0, kValueNotFound = 1, kKeyNotFound = 2, kDataCorrupted = 3 };

  // The top-level container of a document; fails unless it is an object.
  static quorvel::platform::Result<KeyedDecodingContainer> root(const boost::json::value& document);
  // Parses bytes first; malformed JSON is a data-corrupted error.
  static quorvel::platform::Result<boost::json::value> parse(std::string_view bytes);

  quorvel::platform::Result<KeyedDecodingContainer> nested(std::string_view key) const;
  quorvel::platform::Result<bool> decodeBool(std::string_view key) const;
  quorvel::platform::Result<std::int64_t> decodeInt64(std::string_view key) const;
  quorvel::platform::Result<std::string> decodeString(std::string_view key) const;
  quorvel::platform::Result<std::vector<std::string>> decodeStringArray(std::string_view key) const;
  quorvel::platform::Result<std::vector<boost::json::value>> decodeArray(
      std::string_view key) const;
  // Absent or null gives nothing; a present value of the wrong type is an error.
  quorvel::platform::Result<std::optional<std::string>> decodeStringIfPresent(
      std::string_view key) const;

  const boost::json::object& object() const { return *object_; }
  const std::string& codingPath() const { return path_; }

  static quorvel::platform::Error typeMismatch(const std::string& path, const char* expected);

 private:
  KeyedDecodingContainer(const boost::json::object* object, std::string path)
      : object_(object), path_(std::move(path)) {}
  quorvel::platform::Result<const boost::json::value*> require(std::string_view key) const;
  std::string pathTo(std::string_view key) const;

  const boost::json::object* object_;
  std::string path_;
};

}  // namespace velmaro
