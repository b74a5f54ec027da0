#include "quorvel/quorvel.h"

#include <cstdlib>
#include <mutex>
#include <optional>
#include <system_error>

#include <fmt/format.h>

#include "quorvel/anonymous_identity.h"
#include "quorvel/core_services.h"
#include "quorvel/platform/private_directory.h"
#include "quorvel/platform/serial_thread_queue.h"

namespace quorvel {
namespace {

// A claimed blip batch stays its sender's for the whole-request time-out and
// this much more (claiming, building the body, the answer's callback), so a
// live sender never loses a batch whose request may still be accepted.
constexpr std::chrono::seconds kBlipLeaseMargin{10};

std::mutex& instanceMutex() {
  static std::mutex m;
  return m;
}

std::shared_ptr<Quorvel>& instanceSlot() {
  static std::shared_ptr<Quorvel> slot;
  return slot;
}

const char* env(const char* name) {
  const char* v = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read-only use
  return (v != nullptr && *v != '\0') ? v : nullptr;
}

// An app id as one safe path component.
std::string folderName(const std::string& appId) {
  std::string name;
  for (const char c : appId) {
    const bool safe = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '_' || c == '.';
    name += safe ? c : '_';
  }
  if (name.empty() || name == "." || name == "..") name = "default";
  return name;
}

std::optional<std::string> stringValue(const std::optional<boost::json::value>& value) {
  if (!value || !value->is_string()) return std::nullopt;
  return std::string(value->get_string());
}

std::string withoutTrailingSlash(std::string url) {
  while (!url.empty() && url.back() == '/') url.pop_back();
  return url;
}

}  // namespace

struct Quorvel::Parts {
  std::shared_ptr<platform::MainQueue> mainQueue;
  std::filesystem::path dataDirectory;
  std::shared_ptr<platform::UserDefaults> userDefaults;
  std::shared_ptr<CoreServices> services;
  AccountDetails accountDetails{"", "", ""};
  ProviderModule providerModule;
};

std::filesystem::path Quorvel::defaultDataDirectory(const std::string& appId) {
  std::filesystem::path base;
  if (const char* xdg = env("XDG_DATA_HOME")) {
    base = xdg;
  } else if (const char* home = env("HOME")) {
    base = std::filesystem::path(home) / ".local" / "share";
  } else {
    base = std::filesystem::temp_directory_path();
  }
  return base / "quorvel" / folderName(appId);
}

std::shared_ptr<Quorvel> Quorvel::initialize(std::string appId, std::string quorvelUrl,
                                             std::string clientId, QuorvelOptions options) {
  CoreLogger::setLevel(options.logLevel);
  if (options.logSink) CoreLogger::setSink(std::move(options.logSink));

  Parts parts;
  parts.mainQueue = options.mainQueue ? std::move(options.mainQueue)
                                      : std::make_shared<platform::SerialThreadQueue>();
  parts.dataDirectory = options.dataDirectory.value_or(defaultDataDirectory(appId));
  platform::PrivateDirectory::create(parts.dataDirectory);
  parts.userDefaults =
      options.userDefaults ? std::move(options.userDefaults) : platform::UserDefaults::standard();

  quorvelUrl = withoutTrailingSlash(std::move(quorvelUrl));
  TransportLimits limits{options.connectTimeout, options.requestTimeout, options.maxResponseBytes};
  parts.services = std::make_shared<CoreServices>(appId, quorvelUrl, clientId, parts.dataDirectory,
                                                  parts.mainQueue, limits);
  parts.services->setMaxStaleAge(options.maxStaleAge);
  parts.accountDetails = AccountDetails(appId, quorvelUrl, clientId, parts.services);
  parts.providerModule.settings =
      std::make_shared<SettingsProvider>(parts.accountDetails, parts.mainQueue);
  parts.providerModule.blip = std::make_shared<BlipsProvider>(
      parts.accountDetails, parts.mainQueue, parts.dataDirectory / "blips.sqlite",
      options.blipDelay, options.requestTimeout + kBlipLeaseMargin);

  std::shared_ptr<Quorvel> quorvel(new Quorvel(std::move(parts)));
  {
    std::lock_guard lock(instanceMutex());
    instanceSlot() = quorvel;
  }
  CoreLogger::info(fmt::format("Quorvel initialized for app {} at {}", appId, quorvelUrl));
  return quorvel;
}

Quorvel::Quorvel(Parts parts)
    : mainQueue_(std::move(parts.mainQueue)),
      dataDirectory_(std::move(parts.dataDirectory)),
      userDefaults_(std::move(parts.userDefaults)),
      services_(std::move(parts.services)),
      accountDetails_(std::move(parts.accountDetails)),
      providerModule_(std::move(parts.providerModule)),
      storeModule_(services_->sessionStore(), services_) {}

Quorvel::~Quorvel() {
  shutdown();
}

std::shared_ptr<Quorvel> Quorvel::instance() {
  std::lock_guard lock(instanceMutex());
  return instanceSlot();
}

void Quorvel::resetForTesting() {
  std::shared_ptr<Quorvel> previous;
  {
    std::lock_guard lock(instanceMutex());
    previous.swap(instanceSlot());
  }
  if (previous) previous->shutdown();
}

void Quorvel::shutdown() {
  // The blip sender may be waiting for a batch: tell it to stop, let the
  // transport cancel the batch, then wait for it.
  providerModule_.blip->requestStop();
  services_->shutdown();
  providerModule_.blip->shutdown();
}

std::shared_ptr<const Identity> Quorvel::identity() const {
  return services_->identity();
}

void Quorvel::setIdentity(std::shared_ptr<const Identity> identity) {
  if (const auto* anonymous = dynamic_cast<const AnonymousIdentity*>(identity.get());
      anonymous != nullptr && anonymous->guid().empty()) {
    identity = std::make_shared<AnonymousIdentity>(anonymous->withGuid(keptAnonymousGuid()));
  }
  const auto previous = services_->identity();
  const bool sameUser = previous && identity && previous->scope() == identity->scope();
  if (!sameUser) services_->tokens().clear();
  services_->setIdentity(std::move(identity));
}

std::string Quorvel::guidMirrorKey() const {
  std::error_code ec;
  auto folder = std::filesystem::weakly_canonical(dataDirectory_, ec);
  if (ec) folder = std::filesystem::absolute(dataDirectory_, ec);
  return fmt::format("{}:{}", kAnonymousGuidKey, (ec ? dataDirectory_ : folder).string());
}

// On the caller's thread; both stores are safe from any thread.
std::string Quorvel::keptAnonymousGuid() {
  auto& store = *services_->sessionStore();
  const auto mirrorKey = guidMirrorKey();
  const auto kept = stringValue(store.value(kAnonymousGuidKey));
  const auto mirrored = stringValue(userDefaults_->value(mirrorKey));
  if (kept) {
    // Stores from before the mirror, or a mirror lost on its own.
    if (kept != mirrored) userDefaults_->set(mirrorKey, boost::json::value(*kept));
    return *kept;
  }
  std::string guid;
  if (mirrored) {
    guid = *mirrored;
    CoreLogger::warn(
        "The session store had lost the anonymous guid; restored it from the user defaults");
  } else {
    guid = AnonymousIdentity::makeGuid();
    userDefaults_->set(mirrorKey, boost::json::value(guid));
  }
  store.store(boost::json::value(guid), kAnonymousGuidKey);
  return guid;
}

}  // namespace quorvel
