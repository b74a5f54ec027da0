#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <sys/socket.h>

#include "quorvel/platform/network_reachability.h"

namespace velmaro {

// Posted on the default notification centre, with the reachability object as
// sender, each time a started notifier sees the flags change.
inline constexpr const char* QVKAPI_ReachabilityChangedNotification =
    "QVKAPI_ReachabilityChangedNotification";

enum NetworkStatus : int {
  NotReachable = 0,
  ReachableViaWiFi = 1,  // Wi-Fi or any other link that is not cellular
  ReachableViaWWAN = 2,
};

// Whether the device can reach the network, an address or a host now, and
// by which kind of link; with a started notifier, a notification on every
// change. Made only by the four class operations. The notifier runs on the
// run loop of the thread that starts it (RunLoop::current()); stopNotifier
// and the destructor belong on that thread.
class QVKReachability {
 public:
  QVKReachability() = delete;
  QVKReachability(const QVKReachability&) = delete;
  QVKReachability& operator=(const QVKReachability&) = delete;
  // Stops the notifier, then releases the platform reference.
  ~QVKReachability();

  // Nothing when the platform cannot make a reference for the name.
  static std::unique_ptr<QVKReachability> reachabilityWithHostName(std::string_view hostName);
  static std::unique_ptr<QVKReachability> reachabilityWithAddress(const sockaddr* hostAddress);
  // 0.0.0.0: the network in general.
  static std::unique_ptr<QVKReachability> reachabilityForInternetConnection();
  // 169.254.0.0, judged by the local Wi-Fi rule.
  static std::unique_ptr<QVKReachability> reachabilityForLocalWiFi();

  // Watches for changes on the calling thread's run loop; false without one.
  bool startNotifier();
  void stopNotifier();

  NetworkStatus currentReachabilityStatus() const;
  bool connectionRequired() const;

  // The two classification rules; each first logs the flags at debug level.
  static NetworkStatus networkStatusForFlags(std::uint32_t flags);
  static NetworkStatus localWiFiStatusForFlags(std::uint32_t flags);
  // "Reachability Flag Status: ..." for `flags` and the rule's name.
  static std::string flagStatusLine(std::uint32_t flags, std::string_view rule);

  bool localWiFi() const { return localWiFi_; }

 private:
  struct Token {};

 public:
  QVKReachability(Token, bool localWiFi,
                  std::unique_ptr<quorvel::platform::NetworkReachability> reachability)
      : localWiFi_(localWiFi), reachabilityRef_(std::move(reachability)) {}

 private:
  static std::unique_ptr<QVKReachability> make(
      bool localWiFi, std::unique_ptr<quorvel::platform::NetworkReachability> reachability);

  const bool localWiFi_;
  std::unique_ptr<quorvel::platform::NetworkReachability> reachabilityRef_;
};

using Reachability = QVKReachability;

}  // namespace velmaro
