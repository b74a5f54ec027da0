#include "quorvel/platform/notification_center.h"

#include <algorithm>

namespace quorvel::platform {

NotificationCenter::Registration::Registration(Registration&& other) noexcept
    : center_(other.center_), token_(other.token_) {
  other.center_ = nullptr;
  other.token_ = 0;
}

NotificationCenter::Registration& NotificationCenter::Registration::operator=(
    Registration&& other) noexcept {
  if (this != &other) {
    reset();
    center_ = other.center_;
    token_ = other.token_;
    other.center_ = nullptr;
    other.token_ = 0;
  }
  return *this;
}

NotificationCenter::Registration::~Registration() {
  reset();
}

void NotificationCenter::Registration::reset() {
  if (center_ != nullptr && token_ != 0) center_->removeObserver(token_);
  center_ = nullptr;
  token_ = 0;
}

NotificationCenter& NotificationCenter::defaultCenter() {
  // Never destroyed: observers may be removed from static destructors.
  static auto* center = new NotificationCenter();
  return *center;
}

NotificationCenter::Token NotificationCenter::addObserver(std::optional<std::string> name,
                                                          const void* sender, Observer observer) {
  auto entry = std::make_shared<Entry>();
  entry->name = std::move(name);
  entry->sender = sender;
  entry->observer = std::move(observer);
  std::lock_guard lock(mutex_);
  entry->token = nextToken_++;
  entries_.push_back(entry);
  return entry->token;
}

NotificationCenter::Registration NotificationCenter::observe(std::optional<std::string> name,
                                                             const void* sender,
                                                             Observer observer) {
  return Registration(*this, addObserver(std::move(name), sender, std::move(observer)));
}

void NotificationCenter::removeObserver(Token token) {
  std::shared_ptr<Entry> removed;
  {
    std::lock_guard lock(mutex_);
    auto it = std::find_if(entries_.begin(), entries_.end(),
                           [token](const auto& e) { return e->token == token; });
    if (it == entries_.end()) return;
    removed = *it;
    entries_.erase(it);
  }
  removed->active = false;
  // Wait for a call in progress on another thread (recursive: an observer may
  // remove itself).
  std::lock_guard wait(removed->running);
}

void NotificationCenter::post(const Notification& notification) {
  std::vector<std::shared_ptr<Entry>> matching;
  {
    std::lock_guard lock(mutex_);
    for (const auto& e : entries_) {
      if (e->name && *e->name != notification.name) continue;
      if (e->sender != nullptr && e->sender != notification.sender) continue;
      matching.push_back(e);
    }
  }
  for (const auto& e : matching) {
    std::lock_guard running(e->running);
    if (e->active) e->observer(notification);
  }
}

void NotificationCenter::post(std::string name, const void* sender, UserInfo userInfo) {
  post(Notification{std::move(name), sender, std::move(userInfo)});
}

std::size_t NotificationCenter::observerCount() const {
  std::lock_guard lock(mutex_);
  return entries_.size();
}

void NotificationCenter::resetForTesting() {
  std::lock_guard lock(mutex_);
  for (auto& e : entries_) e->active = false;
  entries_.clear();
}

}  // namespace quorvel::platform
