#pragma once

namespace velmaro {

struct DispatcherNotifications {
  // Posted for every 401 answer (twice when an identity is set: observers
  // must tolerate the repeat).
  static constexpr const char* UnauthorizedNotificationName = "QVKUnauthorized";
};

}  // namespace velmaro
