#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "quorvel/platform/error.h"
#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/result.h"
#include "quorvel/quorvel.h"
#include "velmaro/outbox/outbox_entry.h"

namespace velmaro {

class OutboxStore;

// New requests and replies written while the service cannot be reached,
// kept in the core's data folder ("outbox.sqlite") and sent later in the
// order they were written. A request provider uses it only when given one
// (QVKRequestProvider::setOutbox): without, its calls fail as they always
// have.
//
// A call that fails before reaching the service is kept and answered with
// OutboxErrors::queued; one whose answer was lost (a time-out, a dropped
// connection) is kept as unsure and sent again only after a read of the
// service shows it has not got it (the user's requests, or the request's
// comments since the call was kept, compared by text and author). While calls
// wait, a new one joins behind them. The notifications and usage events of
// a call are those of the provider, posted when it is finally sent.
//
// One outbox per data folder in a process; several processes may share the
// folder (one of them sends at a time). Safe from any thread; sending runs on
// the core object's main queue, where `Done` is answered.
class RequestOutbox : public std::enable_shared_from_this<RequestOutbox> {
 public:
  using Error = quorvel::platform::Error;

  struct Report {
    int sent = 0;       // sent now and answered
    int foundSent = 0;  // unsure calls a read showed the service had
    int refused = 0;    // refused by the service (their failure is posted)
    std::size_t waiting = 0;
    // Why sending stopped with calls still waiting, if it did.
    std::optional<Error> stoppedBy;
  };
  using Done = std::function<void(Report)>;

  // The outbox of the core's data folder.
  static std::shared_ptr<RequestOutbox> open(const std::shared_ptr<quorvel::Quorvel>& core);
  ~RequestOutbox();
  RequestOutbox(const RequestOutbox&) = delete;
  RequestOutbox& operator=(const RequestOutbox&) = delete;

  std::vector<OutboxEntry> entries() const;
  std::size_t count() const;

  // Sends what waits, oldest first, one call at a time, and stops at the
  // first that cannot go yet. A second request while sending is answered
  // when the running one ends. Nothing happens (but `done`) while another
  // process is sending.
  void sendWaiting(Done done = {});
  // Sends what waits now, and each time a reachability notifier says the
  // network is back (QVKAPI_ReachabilityChangedNotification).
  void startWatching();
  void stopWatching();

  // Keeps a copy of the file at `path` (in the data folder, readable by the
  // user only) to be uploaded before the call that names the token answered
  // here, which stands in for the upload's own token until then. An error
  // when the copy cannot be made (the file is unreadable, the disk full).
  quorvel::platform::Result<std::string> keepFile(const std::filesystem::path& path,
                                                  std::string name, std::string contentType);
  static constexpr const char* kKeptFilePrefix = "outbox-file:";
  static bool isKeptFile(std::string_view token) { return token.starts_with(kKeptFilePrefix); }

  // For the request provider's calls. When calls wait, or the call names a
  // kept file, `entry` joins the outbox at once and sending starts: the
  // queued outcome to answer. Else nothing, and the call is sent.
  std::optional<Error> keepBehindWaiting(const OutboxEntry& entry);
  // The failure hook of a call being sent: keeps `entry` when a failure
  // says the service did not get it, or may have.
  std::function<std::optional<Error>(const Error&)> keeper(OutboxEntry entry);

 private:
  struct Token {};

 public:
  RequestOutbox(Token, std::shared_ptr<quorvel::Quorvel> core);

 private:
  std::optional<Error> keep(OutboxEntry entry);
  void finished(Report report);

  std::shared_ptr<quorvel::Quorvel> core_;
  std::shared_ptr<OutboxStore> store_;
  std::mutex mutex_;
  bool sending_ = false;
  std::vector<Done> waiters_;
  quorvel::platform::NotificationCenter::Registration reachability_;
};

}  // namespace velmaro
