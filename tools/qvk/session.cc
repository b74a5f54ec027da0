#include "tools/qvk/session.h"

#include <algorithm>
#include <ctime>
#include <iostream>

#include "quorvel/anonymous_identity.h"
#include "quorvel/core_logger.h"
#include "quorvel/jwt_identity.h"
#include "quorvel/request_executor.h"
#include "tools/qvk/client_errors.h"
#include "velmaro/core/support.h"

namespace qvk {

namespace {

quorvel::LogLevel logLevel(int verbosity) {
  switch (verbosity) {
    case 0:
      return quorvel::LogLevel::off;
    case 1:
      return quorvel::LogLevel::info;
    case 2:
      return quorvel::LogLevel::debug;
    default:
      return quorvel::LogLevel::verbose;
  }
}

std::shared_ptr<const quorvel::Identity> identity(const GlobalOptions& options) {
  if (options.jwt) return std::make_shared<quorvel::JwtIdentity>(*options.jwt);
  return std::make_shared<quorvel::AnonymousIdentity>(options.name, options.email);
}

// "2026-11-24 01:02 UTC"
std::string utcMinute(double secondsSince1970) {
  const auto seconds = static_cast<std::time_t>(secondsSince1970);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts);
  return text;
}

}  // namespace

quorvel::platform::Result<std::unique_ptr<Session>> Session::open(const GlobalOptions& options) {
  if (!options.url || options.url->empty()) return ClientErrors::missingUrl();
  // Set before initialize() so that start-up lines obey -v too.
  quorvel::CoreLogger::setLevel(logLevel(options.verbosity));
  auto loop = std::make_shared<quorvel::platform::RunLoop>();
  quorvel::QuorvelOptions coreOptions;
  coreOptions.mainQueue = loop;
  if (options.dataDir) coreOptions.dataDirectory = *options.dataDir;
  coreOptions.logLevel = logLevel(options.verbosity);
  const auto answerTimeout = std::chrono::milliseconds(
      static_cast<std::chrono::milliseconds::rep>(options.timeoutSeconds * 1000));
  // The transport must not end a request sooner than the user agreed to wait.
  coreOptions.requestTimeout = std::max(coreOptions.requestTimeout, answerTimeout);
  auto core = quorvel::Quorvel::initialize(options.appId, *options.url, options.clientId,
                                           std::move(coreOptions));
  core->setIdentity(identity(options));
  velmaro::Support::initialize(core);
  if (options.locale) velmaro::Support::instance()->setHelpCenterLocaleOverride(options.locale);
  std::unique_ptr<Session> session(new Session(std::move(loop), std::move(core), *options.url));
  session->setAnswerTimeout(answerTimeout);
  session->noticeStaleAnswers();
  return session;
}

void Session::noticeStaleAnswers() {
  using quorvel::RequestExecutor;
  staleNotice_ = quorvel::platform::NotificationCenter::defaultCenter().observe(
      RequestExecutor::kStaleAnswerNotification, nullptr,
      [last = std::string()](const quorvel::platform::Notification& notification) mutable {
        const auto it = notification.userInfo.find(RequestExecutor::kStaleAnswerStoredAtKey);
        if (it == notification.userInfo.end()) return;
        const auto* storedAt = std::any_cast<double>(&it->second);
        if (!storedAt) return;
        // One line for the answers of one page, which share a time.
        auto line = "offline: showing the copy from " + utcMinute(*storedAt);
        if (line == last) return;
        std::cerr << line << "\n";
        last = std::move(line);
      });
}

Session::~Session() {
  finish();
}

bool Session::waitUntil(const std::function<bool()>& done) {
  return loop_->runUntil(done, answerTimeout_);
}

void Session::finish() {
  if (finished_) return;
  finished_ = true;
  settle();
  flushBlips();
  core_->shutdown();
  // Shutdown answers what is still in flight with the cancelled error; let
  // those answers run before the loop goes away.
  loop_->runPending();
}

void Session::settle() {
  auto deadline = std::chrono::steady_clock::now() + kSettleLimit;
  while (std::chrono::steady_clock::now() < deadline) {
    if (loop_->runFor(kSettleQuiet) == 0) return;
  }
}

void Session::flushBlips() {
  auto blips = core_->providerModule().blip;
  if (!blips) return;
  auto flushed = std::make_shared<bool>(false);
  blips->flush([flushed](std::optional<quorvel::platform::Error> error) {
    *flushed = true;
    if (error) {
      quorvel::CoreLogger::debug("Blips not sent before exit: " + error->localizedDescription());
    }
  });
  loop_->runUntil([&] { return *flushed; }, kFlushLimit);
}

}  // namespace qvk
