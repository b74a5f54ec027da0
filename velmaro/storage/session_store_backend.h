#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "quorvel/session_store.h"
#include "velmaro/storage/request_storage_protocol.h"

namespace velmaro {

// The core library's session store as the request store's backend. Reads see
// what other processes sharing the data folder wrote; updates are one
// transaction that takes the write lock before it reads. Safe from any thread.
class SessionStoreBackend final : public RequestStorageProtocol {
 public:
  explicit SessionStoreBackend(std::shared_ptr<quorvel::SessionStore> store)
      : store_(std::move(store)) {}

  bool store(const boost::json::value& value, std::string_view key) override {
    return store_ != nullptr && store_->store(value, key);
  }
  std::optional<boost::json::value> value(std::string_view key) override {
    if (store_ == nullptr) return std::nullopt;
    return store_->currentValue(key);
  }
  void read(std::string_view key, const Reader& reader) override {
    if (store_ == nullptr) {
      reader(nullptr);
      return;
    }
    store_->readCurrent(key, reader);
  }
  bool update(std::string_view key, const Change& change) override {
    return store_ != nullptr && store_->update(key, change);
  }

 private:
  std::shared_ptr<quorvel::SessionStore> store_;
};

}  // namespace velmaro
