#include "velmaro/core/qvk_reachability.h"

#include <netinet/in.h>

#include "quorvel/core_logger.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/reachability_flags.h"
#include "quorvel/platform/run_loop.h"

namespace velmaro {
namespace {

namespace Flags = quorvel::platform::ReachabilityFlags;

char flagChar(std::uint32_t flags, std::uint32_t flag, char set) {
  return (flags & flag) != 0 ? set : '-';
}

std::unique_ptr<quorvel::platform::NetworkReachability> forIPv4(std::uint32_t hostOrder) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(hostOrder);
  return quorvel::platform::NetworkReachability::createWithAddress(
      reinterpret_cast<const sockaddr*>(&address));
}

}  // namespace

QVKReachability::~QVKReachability() {
  stopNotifier();
}

std::unique_ptr<QVKReachability> QVKReachability::make(
    bool localWiFi, std::unique_ptr<quorvel::platform::NetworkReachability> reachability) {
  if (!reachability) return nullptr;
  return std::make_unique<QVKReachability>(Token{}, localWiFi, std::move(reachability));
}

std::unique_ptr<QVKReachability> QVKReachability::reachabilityWithHostName(
    std::string_view hostName) {
  return make(false, quorvel::platform::NetworkReachability::createWithName(hostName));
}

std::unique_ptr<QVKReachability> QVKReachability::reachabilityWithAddress(
    const sockaddr* hostAddress) {
  return make(false, quorvel::platform::NetworkReachability::createWithAddress(hostAddress));
}

std::unique_ptr<QVKReachability> QVKReachability::reachabilityForInternetConnection() {
  return make(false, forIPv4(INADDR_ANY));
}

std::unique_ptr<QVKReachability> QVKReachability::reachabilityForLocalWiFi() {
  return make(true, forIPv4(0xA9FE0000u));  // 169.254.0.0
}

bool QVKReachability::startNotifier() {
  // The callback runs on the loop's thread while this object exists: the
  // destructor unschedules before the object goes.
  return reachabilityRef_->schedule(quorvel::platform::RunLoop::current(), [this](std::uint32_t) {
    quorvel::platform::NotificationCenter::defaultCenter().post(
        QVKAPI_ReachabilityChangedNotification, this);
  });
}

void QVKReachability::stopNotifier() {
  reachabilityRef_->unschedule();
}

NetworkStatus QVKReachability::currentReachabilityStatus() const {
  const auto flags = reachabilityRef_->flags();
  if (!flags) return NotReachable;
  return localWiFi_ ? localWiFiStatusForFlags(*flags) : networkStatusForFlags(*flags);
}

bool QVKReachability::connectionRequired() const {
  const auto flags = reachabilityRef_->flags();
  return flags && (*flags & Flags::ConnectionRequired) != 0;
}

NetworkStatus QVKReachability::networkStatusForFlags(std::uint32_t flags) {
  quorvel::CoreLogger::debug(flagStatusLine(flags, "networkStatusForFlags"));
  if ((flags & Flags::Reachable) == 0) return NotReachable;
  if ((flags & Flags::IsWWAN) != 0) return ReachableViaWWAN;
  if ((flags & Flags::ConnectionRequired) == 0) return ReachableViaWiFi;
  const bool onDemandOrTraffic =
      (flags & (Flags::ConnectionOnDemand | Flags::ConnectionOnTraffic)) != 0;
  if (onDemandOrTraffic && (flags & Flags::InterventionRequired) == 0) return ReachableViaWiFi;
  return NotReachable;
}

NetworkStatus QVKReachability::localWiFiStatusForFlags(std::uint32_t flags) {
  quorvel::CoreLogger::debug(flagStatusLine(flags, "localWiFiStatusForFlags"));
  const bool direct = (flags & Flags::Reachable) != 0 && (flags & Flags::IsDirect) != 0;
  return direct ? ReachableViaWiFi : NotReachable;
}

std::string QVKReachability::flagStatusLine(std::uint32_t flags, std::string_view rule) {
  std::string line = "Reachability Flag Status: ";
  line += flagChar(flags, Flags::IsWWAN, 'W');
  line += flagChar(flags, Flags::Reachable, 'R');
  line += ' ';
  line += flagChar(flags, Flags::TransientConnection, 't');
  line += flagChar(flags, Flags::ConnectionRequired, 'c');
  line += flagChar(flags, Flags::ConnectionOnTraffic, 'C');
  line += flagChar(flags, Flags::InterventionRequired, 'i');
  line += flagChar(flags, Flags::ConnectionOnDemand, 'D');
  line += flagChar(flags, Flags::IsLocalAddress, 'l');
  line += flagChar(flags, Flags::IsDirect, 'd');
  line += ' ';
  line += rule;
  line += '\n';
  return line;
}

}  // namespace velmaro
