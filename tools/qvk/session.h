#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "quorvel/platform/notification_center.h"
#include "quorvel/platform/result.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "tools/qvk/global_options.h"

namespace qvk {

// The core library and the support library for one qvk process: a run loop
// as the main queue (pumped while a command waits for its answer, and while
// `qvk shell` waits for a line), the core object with the identity, Support
// with the locale override. finish() lets what is in flight reach the
// service, then shuts the core down.
class Session {
 public:
  // The answer timeout unless --timeout says otherwise.
  static constexpr std::chrono::milliseconds kAnswerTimeout{30'000};
  // How long the main queue must stay quiet before in-flight work counts as done.
  static constexpr std::chrono::milliseconds kSettleQuiet{250};
  static constexpr std::chrono::milliseconds kSettleLimit{3'000};
  static constexpr std::chrono::milliseconds kFlushLimit{3'000};

  // An error when no URL was given. The answer timeout is --timeout's.
  static quorvel::platform::Result<std::unique_ptr<Session>> open(const GlobalOptions& options);

  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const std::shared_ptr<quorvel::Quorvel>& core() const { return core_; }
  const std::string& url() const { return url_; }
  const std::shared_ptr<quorvel::platform::RunLoop>& loop() const { return loop_; }
  std::chrono::milliseconds answerTimeout() const { return answerTimeout_; }
  void setAnswerTimeout(std::chrono::milliseconds timeout) { answerTimeout_ = timeout; }

  // Pumps the main queue until done() or the answer timeout; done()'s value.
  bool waitUntil(const std::function<bool()>& done);

  // Pumps until the main queue has been quiet for a moment (bounded), sends
  // the queued blips (bounded) and shuts the core down. Idempotent.
  void finish();

 private:
  Session(std::shared_ptr<quorvel::platform::RunLoop> loop, std::shared_ptr<quorvel::Quorvel> core,
          std::string url)
      : loop_(std::move(loop)), core_(std::move(core)), url_(std::move(url)) {}

  void settle();
  void flushBlips();
  // Says on standard error when an answer is a stored copy standing in for
  // an unreachable service (main queue).
  void noticeStaleAnswers();

  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<quorvel::Quorvel> core_;
  std::string url_;
  std::chrono::milliseconds answerTimeout_ = kAnswerTimeout;
  bool finished_ = false;
  quorvel::platform::NotificationCenter::Registration staleNotice_;
};

}  // namespace qvk
