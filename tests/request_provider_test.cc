// The request provider against the emulator: one operation family per test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/request_provider_fixture.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(RequestProviderTest, CreatingSendsTheBodyAndAnswersTheResponse) {
  emulator_->control("PUT", "settings", R"({"contact_us_tags":["mobile"]})");
  QVKCreateRequest request;
  request.subject = "Printer";
  request.requestDescription = "Jammed";
  request.tags = {"urgent"};
  request.customFields = {CustomField(31, "floor 3"), CustomField(32, std::nullopt)};
  request.setAttachments(std::vector<std::string>{});
  auto answers = call<QVKDispatcherResponse>(
      [&](auto cb) { provider_->createRequest(request, std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();

  const auto sent = recorder_->matching("/api/mobile/requests.json");
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].method, "POST");
  EXPECT_EQ(sent[0].target, "/api/mobile/requests.json?include=last_comment");
  const auto body = boost::json::parse(sent[0].body).at("request");
  EXPECT_EQ(body.at("subject"), "Printer");
  EXPECT_EQ(body.at("comment"), boost::json::parse(R"({"body":"Jammed","uploads":[]})"));
  EXPECT_EQ(body.at("tags"), boost::json::parse(R"(["urgent","mobile"])"));
  EXPECT_EQ(body.at("custom_fields"), boost::json::parse(R"([{"id":31,"value":"floor 3"}])"));
  EXPECT_TRUE(body.at("metadata").at("sdk").as_object().contains("device_model"));

  EXPECT_THAT(notificationNames(),
              ElementsAre("QVKAPI_RequestSubmissionStarting", "QVKAPI_RequestSubmissionSuccess"));
  const auto created = std::any_cast<QVKRequest>(notifications_[1].userInfo.at("request"));
  ASSERT_TRUE(created.requestId);
  const auto stored = storage().getRequestForId(*created.requestId);
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->readCommentCount(), stored->commentCount());
}

TEST_F(RequestProviderTest, AllRequestsAsksForEveryStatusAndRefreshesTheStore) {
  const auto id = createRequest("Listed");
  ASSERT_FALSE(id.empty());
  storage().storeRequest(RequestForStorage(id, 0, 0));
  recorder_->clear();
  notifications_.clear();
  auto answers = call<QVKRequestsWithCommentingAgents>(
      [&](auto cb) { provider_->getAllRequests(std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_EQ(lastTarget("/api/mobile/requests"),
            "/api/mobile/requests.json?include=public_updated_at,last_commenting_agents,last_"
            "comment,first_comment&status=new,open,pending,hold,solved,closed&sort_by=updated_at&"
            "sort_order=desc");
  settle();
  EXPECT_THAT(notificationNames(),
              ElementsAre("QVKAPI_RequestsStarting", "QVKAPI_RequestsSuccess"));
  const auto stored = storage().getRequestForId(id);
  ASSERT_TRUE(stored);
  EXPECT_GE(stored->commentCount(), 1);
  EXPECT_EQ(stored->readCommentCount(), 0);  // the read count survives a refresh
  EXPECT_FALSE(storage().isRequestCacheExpired());
}

TEST_F(RequestProviderTest, AnAnonymousUserWithNothingStoredGetsTwoEmptyLists) {
  useAnonymousIdentity();
  auto answers = call<QVKRequestsWithCommentingAgents>(
      [&](auto cb) { provider_->getAllRequests(std::move(cb)); });
  settle();
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_THAT(*(*answers)[0].result->requests, IsEmpty());
  EXPECT_THAT(*(*answers)[0].result->commentingAgents, IsEmpty());
  EXPECT_THAT(recorder_->matching("/api/mobile/requests"), IsEmpty());
  EXPECT_THAT(notificationNames(), ElementsAre("QVKAPI_RequestsStarting"));
}

TEST_F(RequestProviderTest, AnAnonymousUserListsTheStoredIdsByToken) {
  useAnonymousIdentity();
  const auto id = createRequest("Mine");
  ASSERT_FALSE(id.empty());
  EXPECT_FALSE(recorder_->matching("/api/mobile/requests.json")[0].body.empty());
  auto answers = call<QVKRequestsWithCommentingAgents>(
      [&](auto cb) { provider_->getRequestsByStatus(std::string("open,pending"), std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  EXPECT_THAT(
      lastTarget("show_many"),
      HasSubstr("/api/mobile/requests/show_many.json?tokens=" + id + "&include=public_updated_at"));
  EXPECT_THAT(lastTarget("show_many"), HasSubstr("&status=open,pending&"));
}

TEST_F(RequestProviderTest, WithConversationsOffNothingIsSent) {
  emulator_->control("PUT", "settings", R"({"conversations":false})");
  auto answers = call<QVKRequest>(
      [&](auto cb) { provider_->getRequestById(std::string("1"), std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].error);
  EXPECT_EQ((*answers)[0].error->domain, "QVDispatcher");
  EXPECT_EQ((*answers)[0].error->code, -7001);
  EXPECT_THAT(notificationNames(),
              ElementsAre("QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdError"));
  EXPECT_THAT(recorder_->matching("/api/mobile/requests/"), IsEmpty());
}

TEST_F(RequestProviderTest, ARequestById) {
  const auto id = createRequest("One");
  notifications_.clear();
  auto answers = call<QVKRequest>([&](auto cb) { provider_->getRequestById(id, std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_EQ((*answers)[0].result->subject, "One");
  EXPECT_EQ(lastTarget("/api/mobile/requests/"), "/api/mobile/requests/" + id + ".json");
  settle();
  EXPECT_THAT(notificationNames(),
              ElementsAre("QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdSuccess"));
}

TEST_F(RequestProviderTest, AddingACommentCountsItAsRead) {
  const auto id = createRequest("Reply");
  const auto before = storage().getRequestForId(id);
  ASSERT_TRUE(before);
  notifications_.clear();
  auto answers = call<QVKComment>(
      [&](auto cb) { provider_->addComment(std::string("Any news?"), id, std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result) << (*answers)[0].error->debugDescription();
  EXPECT_EQ((*answers)[0].result->body, "Any news?");
  const auto sent = recorder_->matching("/api/mobile/requests/" + id + ".json");
  ASSERT_FALSE(sent.empty());
  EXPECT_EQ(sent.back().method, "PUT");
  EXPECT_EQ(boost::json::parse(sent.back().body),
            boost::json::parse(R"({"request":{"comment":{"value":"Any news?"}}})"));
  settle();
  EXPECT_THAT(notificationNames(),
              ElementsAre("QVKAPI_CommentSubmissionStarting", "QVKAPI_CommentSubmissionSuccess"));
  const auto after = storage().getRequestForId(id);
  EXPECT_EQ(after->commentCount(), before->commentCount() + 1);
  EXPECT_EQ(after->readCommentCount(), before->readCommentCount() + 1);
}

TEST_F(RequestProviderTest, CommentsComeWithTheirAuthorsAndNoSender) {
  const auto id = createRequest("Thread");
  notifications_.clear();
  auto answers = call<std::vector<QVKCommentWithUser>>(
      [&](auto cb) { provider_->getCommentsWithRequestId(id, std::move(cb)); });
  ASSERT_TRUE((*answers)[0].result);
  ASSERT_FALSE((*answers)[0].result->empty());
  EXPECT_EQ((*answers)[0].result->back().comment().body, "It does not print.");
  EXPECT_EQ(lastTarget("/comments"),
            "/api/mobile/requests/" + id + "/comments.json?sort_by=updated_at&sort_order=desc");
  settle();
  EXPECT_THAT(notificationNames(nullptr),
              ElementsAre("QVKAPI_CommentListStarting", "QVKAPI_CommentListSuccess"));
}

TEST_F(RequestProviderTest, TicketFormsAskForFiveIdsThenComeFromTheCache) {
  constexpr std::int64_t kContact = 360000040001;
  constexpr std::int64_t kBug = 360000040002;
  auto first = call<QVKRequestProvider::TicketForms>([&](auto cb) {
    provider_->getTicketFormWithIds({kContact, kBug, 3, 4, 5, 6, 7}, std::move(cb));
  });
  ASSERT_TRUE((*first)[0].result) << (*first)[0].error->debugDescription();
  EXPECT_EQ(lastTarget("ticket_forms"),
            "/api/v2/ticket_forms/show_many.json?ids=360000040001,360000040002,3,4,5&include="
            "ticket_fields&active=true");
  ASSERT_EQ((*first)[0].result->size(), 2u);
  EXPECT_FALSE((*first)[0].result->front()->ticketFields.empty());

  // Both cached: answered at once, in the order asked, with nothing sent.
  recorder_->clear();
  std::optional<QVKRequestProvider::TicketForms> cached;
  provider_->getTicketFormWithIds({kBug, kContact}, [&](auto forms, auto) { cached = forms; });
  ASSERT_TRUE(cached);
  ASSERT_EQ(cached->size(), 2u);
  EXPECT_EQ(cached->front(), (*first)[0].result->back());
  EXPECT_THAT(recorder_->matching("ticket_forms"), IsEmpty());

  auto empty = call<QVKRequestProvider::TicketForms>(
      [&](auto cb) { provider_->getTicketFormWithIds({}, std::move(cb)); });
  ASSERT_TRUE((*empty)[0].error);
  EXPECT_EQ((*empty)[0].error->code, -7003);
}

TEST_F(RequestProviderTest, ExpiredCountersFetchEveryRequestThenAnswerFromTheDevice) {
  ASSERT_FALSE(createRequest("Counted").empty());
  ASSERT_TRUE(storage().isRequestCacheExpired());
  std::vector<std::optional<RequestUpdates>> answers;
  provider_->getUpdatesForDevice([&](auto updates) { answers.push_back(std::move(updates)); });
  ASSERT_TRUE(pumpUntil([&] { return !answers.empty(); }));
  // A non-empty list refreshes the counters but is deliberately not answered.
  EXPECT_FALSE(answers[0]);
  EXPECT_FALSE(lastTarget("status=new,open,pending,hold,solved,closed").empty());
  recorder_->clear();
  provider_->getUpdatesForDevice([&](auto updates) { answers.push_back(std::move(updates)); });
  ASSERT_EQ(answers.size(), 2u);  // fresh now: at once, from the device
  EXPECT_TRUE(answers[1]);
  EXPECT_THAT(recorder_->matching("/api/mobile/requests"), IsEmpty());
}

TEST_F(RequestProviderTest, FreshCountersAnswerUpdatesFromTheDevice) {
  storage().storeRequestsAndResetCacheTime(
      {RequestForStorage("a", 5, 3), RequestForStorage("b", 2, 2)});
  std::optional<RequestUpdates> updates;
  bool answered = false;
  provider_->getUpdatesForDevice([&](std::optional<RequestUpdates> u) {
    updates = std::move(u);
    answered = true;
  });
  ASSERT_TRUE(answered);  // at once, on this thread
  ASSERT_TRUE(updates);
  EXPECT_EQ(updates->totalUpdates(), 2);
  EXPECT_TRUE(updates->isRequestUnread("a"));
  EXPECT_FALSE(updates->isRequestUnread("b"));

  provider_->markRequestAsRead("a", 7);
  EXPECT_EQ(storage().getRequestForId("a"), RequestForStorage("a", 7, 7));
  provider_->markRequestAsUnread("a");
  EXPECT_EQ(storage().getRequestForId("a"), RequestForStorage("a", 8, 7));
  EXPECT_THAT(recorder_->matching("/api/mobile/requests"), IsEmpty());
}

}  // namespace
}  // namespace velmaro::testing
