// The request provider with an outbox: what the caller and the notification
// centre see when a call is kept, and when it is finally sent by a later
// core object on the same data folder.
#include "velmaro/outbox/request_outbox.h"

#include <gtest/gtest.h>

#include "tests/request_provider_fixture.h"
#include "velmaro/core/qvk_reachability.h"
#include "velmaro/outbox/outbox_errors.h"
#include "velmaro/requests/request_notifications.h"

namespace velmaro::testing {
namespace {

class RequestOutboxTest : public RequestProviderTest {
 protected:
  std::string serviceUrl() const override {
    return offline_ ? closedLoopbackUrl() : RequestProviderTest::serviceUrl();
  }
  void startProviders() override {
    RequestProviderTest::startProviders();
    outbox_ = RequestOutbox::open(core_);
    provider_->setOutbox(outbox_);
  }
  void stopProviders() override {
    RequestProviderTest::stopProviders();
    outbox_.reset();
  }
  // The same data folder under a core object that reaches the service, or not.
  void restartCore(bool offline) {
    stopCore();
    offline_ = offline;
    startCore();
    notifications_.clear();
  }

  RequestOutbox::Report sendWaiting() {
    std::optional<RequestOutbox::Report> report;
    outbox_->sendWaiting([&](RequestOutbox::Report sent) { report = sent; });
    EXPECT_TRUE(pumpUntil([&] { return report.has_value(); }));
    settle();
    return report.value_or(RequestOutbox::Report{});
  }

  bool offline_ = false;
  std::shared_ptr<RequestOutbox> outbox_;
};

TEST_F(RequestOutboxTest, AReplyKeptOfflineAnnouncesOnlyItsStartThenSucceedsWhenSent) {
  const auto id = createRequest("Printer");
  ASSERT_FALSE(id.empty());
  restartCore(true);

  auto kept = call<QVKComment>(
      [&](auto cb) { provider_->addComment(std::string("Still broken"), id, std::move(cb)); });
  settle();
  ASSERT_EQ(kept->size(), 1u);
  ASSERT_TRUE((*kept)[0].error);
  EXPECT_TRUE(OutboxErrors::isQueued(*(*kept)[0].error)) << (*kept)[0].error->debugDescription();
  EXPECT_EQ(notificationNames(), std::vector<std::string>{QVKAPI_CommentSubmissionStarting});

  restartCore(false);
  const auto report = sendWaiting();
  EXPECT_EQ(report.sent, 1);
  EXPECT_EQ(report.waiting, 0u);
  EXPECT_EQ(notificationNames(outbox_.get()),
            (std::vector<std::string>{QVKAPI_CommentSubmissionStarting,
                                      QVKAPI_CommentSubmissionSuccess}));
  EXPECT_EQ(storage().getRequestForId(id)->readCommentCount(), 2);
}

TEST_F(RequestOutboxTest, ARequestRefusedWhenFinallySentAnnouncesItsFailureAndLeaves) {
  restartCore(true);
  auto kept = call<QVKDispatcherResponse>([&](auto cb) {
    provider_->createRequestWithSubject(std::string("Refused"), std::string("later refused"),
                                        std::nullopt, std::nullopt, {}, std::nullopt,
                                        std::move(cb));
  });
  ASSERT_TRUE((*kept)[0].error && OutboxErrors::isQueued(*(*kept)[0].error));

  restartCore(false);
  emulator_->control("POST", "faults",
                     R"({"status":422,"path_prefix":"/api/mobile/requests.json"})");
  const auto report = sendWaiting();
  EXPECT_EQ(report.refused, 1);
  EXPECT_EQ(report.waiting, 0u);
  EXPECT_EQ(
      notificationNames(outbox_.get()),
      (std::vector<std::string>{QVKAPI_RequestSubmissionStarting, QVKAPI_RequestSubmissionError}));
}

TEST_F(RequestOutboxTest, ANetworkThatComesBackSendsWhatWaits) {
  const auto id = createRequest("Scanner");
  restartCore(true);
  call<QVKComment>(
      [&](auto cb) { provider_->addComment(std::string("Again"), id, std::move(cb)); });

  restartCore(false);
  emulator_->control("POST", "faults", R"({"status":503,"path_prefix":"/api/mobile/requests/"})");
  std::vector<RequestOutbox::Report> reports;
  outbox_->startWatching();  // sends at once: the 503 keeps the reply waiting
  outbox_->sendWaiting([&](RequestOutbox::Report report) { reports.push_back(report); });
  ASSERT_TRUE(pumpUntil([&] { return !reports.empty(); }));
  EXPECT_EQ(reports[0].waiting, 1u);

  // Loopback is always reachable: its notifier stands in for a network that came back.
  const auto network = QVKReachability::reachabilityWithHostName("127.0.0.1");
  quorvel::platform::NotificationCenter::defaultCenter().post(
      QVKAPI_ReachabilityChangedNotification, network.get());
  EXPECT_TRUE(pumpUntil([&] { return outbox_->count() == 0; }));
  outbox_->stopWatching();
}

}  // namespace
}  // namespace velmaro::testing
