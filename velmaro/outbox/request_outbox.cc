#include "velmaro/outbox/request_outbox.h"

#include <algorithm>
#include <map>

#include "quorvel/platform/private_directory.h"
#include "quorvel/random_uuid.h"
#include "velmaro/core/qvk_reachability.h"
#include "velmaro/outbox/outbox_errors.h"
#include "velmaro/outbox/outbox_sender.h"
#include "velmaro/outbox/outbox_store.h"

namespace velmaro {

namespace {

// Longer than any one call takes, so that a live sender never loses the
// lease to another process; a killed one is noticed at once on this host.
constexpr std::chrono::minutes kSenderLease{5};

std::mutex registryMutex;
std::map<std::filesystem::path, std::weak_ptr<RequestOutbox>>& registry() {
  static std::map<std::filesystem::path, std::weak_ptr<RequestOutbox>> outboxes;
  return outboxes;
}

}  // namespace

std::shared_ptr<RequestOutbox> RequestOutbox::open(const std::shared_ptr<quorvel::Quorvel>& core) {
  std::lock_guard lock(registryMutex);
  auto& slot = registry()[core->dataDirectory()];
  if (auto outbox = slot.lock()) return outbox;
  auto outbox = std::make_shared<RequestOutbox>(Token{}, core);
  slot = outbox;
  return outbox;
}

RequestOutbox::RequestOutbox(Token, std::shared_ptr<quorvel::Quorvel> core)
    : core_(std::move(core)),
      store_(
          std::make_shared<OutboxStore>(core_->dataDirectory() / "outbox.sqlite", kSenderLease)) {}

RequestOutbox::~RequestOutbox() = default;

std::vector<OutboxEntry> RequestOutbox::entries() const {
  return store_->entries();
}

std::size_t RequestOutbox::count() const {
  return store_->count();
}

void RequestOutbox::sendWaiting(Done done) {
  {
    std::lock_guard lock(mutex_);
    if (done) waiters_.push_back(std::move(done));
    if (sending_) return;
    sending_ = true;
  }
  OutboxSender::start(store_, QVKRequestProviderContext(core_, this),
                      [self = shared_from_this()](Report report) { self->finished(report); });
}

void RequestOutbox::finished(Report report) {
  std::vector<Done> waiters;
  {
    std::lock_guard lock(mutex_);
    sending_ = false;
    waiters.swap(waiters_);
  }
  for (auto& done : waiters) done(report);
}

// Only a QVKReachability posts this name, with itself as the sender.
void RequestOutbox::startWatching() {
  std::weak_ptr<RequestOutbox> weak = shared_from_this();
  reachability_ = quorvel::platform::NotificationCenter::defaultCenter().observe(
      std::string(QVKAPI_ReachabilityChangedNotification), nullptr,
      [weak](const quorvel::platform::Notification& notification) {
        const auto* source = static_cast<const QVKReachability*>(notification.sender);
        if (source == nullptr || source->currentReachabilityStatus() == NotReachable) return;
        if (auto self = weak.lock()) self->sendWaiting();
      });
  sendWaiting();
}

void RequestOutbox::stopWatching() {
  reachability_.reset();
}

quorvel::platform::Result<std::string> RequestOutbox::keepFile(const std::filesystem::path& path,
                                                               std::string name,
                                                               std::string contentType) {
  const auto folder = core_->dataDirectory() / "outbox-files";
  const auto uuid = quorvel::randomUuid();
  const auto copy = folder / uuid;
  std::error_code ec;
  if (!quorvel::platform::PrivateDirectory::create(folder) ||
      !std::filesystem::copy_file(path, copy, ec) || ec) {
    std::filesystem::remove(copy, ec);
    return Error::withDescription(
        OutboxErrors::kDomain, OutboxErrors::kCannotKeep,
        "Could not keep a copy of " + path.string() + " in the outbox; nothing was kept");
  }
  std::filesystem::permissions(
      copy, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, ec);
  const std::string token = kKeptFilePrefix + uuid;
  if (!store_->addFile({token, copy, std::move(name), std::move(contentType)})) {
    std::filesystem::remove(copy, ec);
    return Error::withDescription(OutboxErrors::kDomain, OutboxErrors::kCannotKeep,
                                  "Could not write to the outbox; nothing was kept");
  }
  return token;
}

std::optional<RequestOutbox::Error> RequestOutbox::keepBehindWaiting(const OutboxEntry& entry) {
  const bool namesKeptFile =
      std::any_of(entry.tokens.begin(), entry.tokens.end(),
                  [](const std::string& token) { return isKeptFile(token); });
  if (!namesKeptFile && store_->count() == 0) return std::nullopt;
  auto queued = keep(entry);
  if (queued) sendWaiting();
  return queued;
}

std::function<std::optional<RequestOutbox::Error>(const RequestOutbox::Error&)>
RequestOutbox::keeper(OutboxEntry entry) {
  return [weak = weak_from_this(), entry = std::move(entry)](const Error& error) mutable {
    const auto self = weak.lock();
    if (!self) return std::optional<Error>();
    switch (OutboxErrors::classify(error)) {
      case OutboxErrors::Failure::notReached:
        entry.state = OutboxEntry::State::waiting;
        break;
      case OutboxErrors::Failure::mayHaveReached:
        entry.state = OutboxEntry::State::unsure;
        break;
      default:
        return std::optional<Error>();
    }
    entry.lastError = error.localizedDescription();
    return self->keep(std::move(entry));
  };
}

// A call the file cannot take is not lost silently: its own failure stands.
std::optional<RequestOutbox::Error> RequestOutbox::keep(OutboxEntry entry) {
  const auto id = store_->append(entry);
  if (id == 0) return std::nullopt;
  return OutboxErrors::queued(id);
}

}  // namespace velmaro
