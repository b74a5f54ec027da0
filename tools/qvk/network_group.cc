#include "tools/qvk/network_group.h"

#include <chrono>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

#include "quorvel/platform/notification_center.h"
#include "tools/qvk/interrupt_watch.h"
#include "velmaro/core/qvk_reachability.h"

namespace qvk {
namespace {

// The exit status of a command that a SIGINT ended, as shells report it.
constexpr int kInterrupted = 130;

const char* describe(velmaro::NetworkStatus status) {
  switch (status) {
    case velmaro::ReachableViaWiFi:
      return "Reachable via Wi-Fi or another non-cellular link";
    case velmaro::ReachableViaWWAN:
      return "Reachable via the cellular network (WWAN)";
    default:
      return "Not reachable";
  }
}

void print(CommandContext& context, const velmaro::QVKReachability& reachability) {
  const auto status = reachability.currentReachabilityStatus();
  if (context.output.json()) {
    context.output.document(
        boost::json::object{{"status", static_cast<int>(status)},
                            {"description", describe(status)},
                            {"connectionRequired", reachability.connectionRequired()}});
    return;
  }
  context.output.text() << describe(status) << '\n';
  context.output.text().flush();
}

}  // namespace

void NetworkGroup::declare(CLI::App& root) {
  command(&root, "network", "Whether the network can be reached, and by which kind of link",
          &NetworkGroup::show)
      ->add_flag("--watch", watch_, "Print each change until interrupted (Ctrl-C)");
}

int NetworkGroup::show(CommandContext& context) const {
  auto reachability = velmaro::QVKReachability::reachabilityForInternetConnection();
  if (!reachability) return 1;
  if (!watch_) {
    print(context, *reachability);
    return 0;
  }
  // Ready for Ctrl-C before the first line, so that whoever reacts to that
  // line can interrupt at once.
  const auto& loop = context.session.loop();
  InterruptWatch interrupt(loop);
  print(context, *reachability);
  auto registration = quorvel::platform::NotificationCenter::defaultCenter().observe(
      velmaro::QVKAPI_ReachabilityChangedNotification, reachability.get(),
      [&](const quorvel::platform::Notification&) { print(context, *reachability); });
  if (!interrupt.installed() || !reachability->startNotifier()) {
    context.output.errorText() << "error: cannot watch the network's state\n";
    return 1;
  }
  // Until the person presses Ctrl-C: the loop sleeps on the kernel's routing
  // socket and the interrupt pipe; the hour only bounds each pump.
  while (!interrupt.interrupted()) {
    loop->runUntil([&interrupt] { return interrupt.interrupted(); }, std::chrono::hours(1));
  }
  reachability->stopNotifier();
  return kInterrupted;
}

}  // namespace qvk
