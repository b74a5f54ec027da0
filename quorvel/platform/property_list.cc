#include "quorvel/platform/property_list.h"

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/string.hpp>
#include <plist/plist.h>

namespace quorvel::platform {
namespace {

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr double kPlistEpochOffset = 978307200.0;

std::string base64(const char* data, uint64_t length) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  out.reserve((length + 2) / 3 * 4);
  for (uint64_t i = 0; i < length; i += 3) {
    uint32_t chunk = static_cast<uint32_t>(static_cast<unsigned char>(data[i])) << 16;
    if (i + 1 < length)
      chunk |= static_cast<uint32_t>(static_cast<unsigned char>(data[i + 1])) << 8;
    if (i + 2 < length) chunk |= static_cast<unsigned char>(data[i + 2]);
    out += kAlphabet[(chunk >> 18) & 63];
    out += kAlphabet[(chunk >> 12) & 63];
    out += i + 1 < length ? kAlphabet[(chunk >> 6) & 63] : '=';
    out += i + 2 < length ? kAlphabet[chunk & 63] : '=';
  }
  return out;
}

boost::json::value toJson(plist_t node);

boost::json::value stringToJson(plist_t node) {
  uint64_t length = 0;
  const char* value = plist_get_string_ptr(node, &length);
  return boost::json::string(value != nullptr ? std::string_view(value, length) : "");
}

boost::json::value keyToJson(plist_t node) {
  char* value = nullptr;
  plist_get_key_val(node, &value);
  boost::json::value out = boost::json::string(value ? value : "");
  free(value);
  return out;
}

boost::json::value dataToJson(plist_t node) {
  char* data = nullptr;
  uint64_t length = 0;
  plist_get_data_val(node, &data, &length);
  boost::json::value out = boost::json::string(base64(data, length));
  free(data);
  return out;
}

boost::json::value arrayToJson(plist_t node) {
  boost::json::array out;
  const uint32_t size = plist_array_get_size(node);
  out.reserve(size);
  for (uint32_t i = 0; i < size; ++i) out.push_back(toJson(plist_array_get_item(node, i)));
  return out;
}

boost::json::value dictToJson(plist_t node) {
  boost::json::object out;
  plist_dict_iter it = nullptr;
  plist_dict_new_iter(node, &it);
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(node, it, &key, &value);
    if (key == nullptr) break;
    out[key] = toJson(value);
    free(key);
  }
  free(it);
  return out;
}

boost::json::value toJson(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
      uint8_t value = 0;
      plist_get_bool_val(node, &value);
      return value != 0;
    }
    case PLIST_UINT: {
      uint64_t value = 0;
      plist_get_uint_val(node, &value);
      // Negative integers are stored as their two's complement.
      return static_cast<int64_t>(value);
    }
    case PLIST_REAL: {
      double value = 0;
      plist_get_real_val(node, &value);
      return value;
    }
    case PLIST_STRING:
      return stringToJson(node);
    case PLIST_KEY:
      return keyToJson(node);
    case PLIST_DATE: {
      int32_t seconds = 0;
      int32_t micros = 0;
      plist_get_date_val(node, &seconds, &micros);
      return kPlistEpochOffset + seconds + micros / 1e6;
    }
    case PLIST_DATA:
      return dataToJson(node);
    case PLIST_UID: {
      uint64_t value = 0;
      plist_get_uid_val(node, &value);
      return value;
    }
    case PLIST_ARRAY:
      return arrayToJson(node);
    case PLIST_DICT:
      return dictToJson(node);
    default:
      return nullptr;
  }
}

std::size_t count(std::string_view text, std::string_view needle) {
  std::size_t n = 0;
  for (auto at = text.find(needle); at != std::string_view::npos;
       at = text.find(needle, at + needle.size())) {
    ++n;
  }
  return n;
}

bool tooManyContainers(std::string_view xml) {
  return count(xml, "<array") + count(xml, "<dict") > PropertyList::kMaxXmlContainers;
}

}  // namespace

std::optional<boost::json::value> PropertyList::parse(std::string_view bytes) {
  if (bytes.empty() || bytes.size() > std::numeric_limits<uint32_t>::max()) return std::nullopt;
  // Whatever is not binary goes to libplist's XML reader. XML has no NUL
  // character, so its text ends at the first NUL byte (a provisioning
  // profile's signature follows its XML); libplist would abort on a string or
  // key with a NUL inside (its getters assert that the length is strlen's).
  if (!bytes.starts_with("bplist")) {
    bytes = bytes.substr(0, bytes.find('\0'));
    if (bytes.empty() || tooManyContainers(bytes)) return std::nullopt;
  }
  plist_t root = nullptr;
  plist_from_memory(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
  if (root == nullptr) return std::nullopt;
  auto json = toJson(root);
  plist_free(root);
  return json;
}

}  // namespace quorvel::platform
