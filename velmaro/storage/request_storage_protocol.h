#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include <boost/json/value.hpp>

namespace velmaro {

// What RequestStorage needs of the store under it. The core library's
// session store stands behind it in production (SessionStoreBackend); tests
// may put a double in its place.
class RequestStorageProtocol {
 public:
  using Change = std::function<boost::json::value(std::optional<boost::json::value> current)>;

  virtual ~RequestStorageProtocol() = default;

  // True when the value was stored.
  virtual bool store(const boost::json::value& value, std::string_view key) = 0;
  virtual std::optional<boost::json::value> value(std::string_view key) = 0;
  // Shows `read` the value (nothing when there is none) without handing out
  // a copy where the store can. `read` must not call the store. This
  // default reads a copy.
  using Reader = std::function<void(const boost::json::value* current)>;
  virtual void read(std::string_view key, const Reader& reader) {
    const auto current = value(key);
    reader(current ? &*current : nullptr);
  }
  // Reads the value, applies `change` and stores the result as one step that
  // no other writer interleaves with. This default is a plain read then
  // write, for doubles that have no other writer.
  virtual bool update(std::string_view key, const Change& change) {
    return store(change(value(key)), key);
  }
};

}  // namespace velmaro
