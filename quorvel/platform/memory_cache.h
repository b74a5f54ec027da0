#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace quorvel::platform {

// A thread-safe in-memory cache that evicts the least recently used entries
// when it holds more than `countLimit` objects or more than `totalCostLimit`
// cost (a limit of 0 means none). For decoded images and similar objects that
// can always be made again: callers must expect a miss at any time.
template <class Key, class Value, class Hash = std::hash<Key>>
class MemoryCache {
 public:
  struct Limits {
    std::size_t countLimit = 0;
    std::size_t totalCostLimit = 0;
  };

  explicit MemoryCache(Limits limits = {}) : limits_(limits) {}
  MemoryCache(const MemoryCache&) = delete;
  MemoryCache& operator=(const MemoryCache&) = delete;

  // The cached object, or null; a hit makes the entry the most recently used.
  std::shared_ptr<const Value> object(const Key& key) {
    std::lock_guard lock(mutex_);
    auto it = index_.find(key);
    if (it == index_.end()) return nullptr;
    order_.splice(order_.begin(), order_, it->second);
    return it->second->value;
  }

  // Stores `value` under `key`, replacing an earlier entry. A null value is
  // ignored (the earlier entry stays).
  void setObject(const Key& key, std::shared_ptr<const Value> value, std::size_t cost = 0) {
    if (!value) return;
    std::lock_guard lock(mutex_);
    eraseLocked(key);
    order_.push_front(Entry{key, std::move(value), cost});
    index_.emplace(key, order_.begin());
    totalCost_ += cost;
    evictLocked();
  }

  void remove(const Key& key) {
    std::lock_guard lock(mutex_);
    eraseLocked(key);
  }

  void removeAll() {
    std::lock_guard lock(mutex_);
    index_.clear();
    order_.clear();
    totalCost_ = 0;
  }

  void setLimits(Limits limits) {
    std::lock_guard lock(mutex_);
    limits_ = limits;
    evictLocked();
  }

  std::size_t count() const {
    std::lock_guard lock(mutex_);
    return index_.size();
  }

  std::size_t totalCost() const {
    std::lock_guard lock(mutex_);
    return totalCost_;
  }

 private:
  struct Entry {
    Key key;
    std::shared_ptr<const Value> value;
    std::size_t cost;
  };
  using Order = std::list<Entry>;

  void eraseLocked(const Key& key) {
    auto it = index_.find(key);
    if (it == index_.end()) return;
    totalCost_ -= it->second->cost;
    order_.erase(it->second);
    index_.erase(it);
  }

  void evictLocked() {
    auto over = [this] {
      return (limits_.countLimit != 0 && index_.size() > limits_.countLimit) ||
             (limits_.totalCostLimit != 0 && totalCost_ > limits_.totalCostLimit);
    };
    while (!order_.empty() && over()) eraseLocked(order_.back().key);
  }

  mutable std::mutex mutex_;
  Limits limits_;
  Order order_;  // most recently used first
  std::unordered_map<Key, typename Order::iterator, Hash> index_;
  std::size_t totalCost_ = 0;
};

}  // namespace quorvel::platform
