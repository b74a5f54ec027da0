#pragma once

#include <any>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::platform {

// Values attached to a notification ({"error": Error}, {"request": QVKRequest}).
using UserInfo = std::map<std::string, std::any>;

struct Notification {
  std::string name;
  // Identity of the object that posted it (a provider), or null.
  const void* sender = nullptr;
  UserInfo userInfo;
};

// Observers by name and optional sender. Posting is synchronous: observers run
// on the posting thread, inside post(). Safe from any thread; an observer may
// add or remove observers, and one removed from another thread is not called
// after removeObserver() has returned.
class NotificationCenter {
 public:
  using Observer = std::function<void(const Notification&)>;
  using Token = std::uint64_t;

  // Removes its observer when destroyed.
  class Registration {
   public:
    Registration() = default;
    Registration(NotificationCenter& center, Token token) : center_(&center), token_(token) {}
    Registration(Registration&& other) noexcept;
    Registration& operator=(Registration&& other) noexcept;
    ~Registration();
    void reset();

   private:
    NotificationCenter* center_ = nullptr;
    Token token_ = 0;
  };

  NotificationCenter() = default;
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  static NotificationCenter& defaultCenter();

  // `name` absent: every notification; `sender` null: from any sender.
  Token addObserver(std::optional<std::string> name, const void* sender, Observer observer);
  Registration observe(std::optional<std::string> name, const void* sender, Observer observer);
  void removeObserver(Token token);

  void post(const Notification& notification);
  void post(std::string name, const void* sender = nullptr, UserInfo userInfo = {});

  std::size_t observerCount() const;
  // Drops every observer, so that tests do not leak into each other.
  void resetForTesting();

 private:
  struct Entry {
    Token token;
    std::optional<std::string> name;
    const void* sender;
    Observer observer;
    std::atomic<bool> active{true};
    // Held while the observer runs, so that removeObserver() from another
    // thread waits for a running call to finish.
    std::recursive_mutex running;
  };

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Entry>> entries_;
  Token nextToken_ = 1;
};

}  // namespace quorvel::platform
