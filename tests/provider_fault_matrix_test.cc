// Every provider operation against every kind of service failure: the
// callback answers once, with the error of the failure, and nothing of the
// failed answer is kept (the next call goes to the service again).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "quorvel/platform/transport_error.h"
#include "tests/provider_fixture.h"
#include "velmaro/attachments/qvk_attachment_provider.h"
#include "velmaro/attachments/qvk_upload_provider.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/core/qvk_etag.h"
#include "velmaro/helpcenter/qvk_help_center_deflection.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"
#include "velmaro/helpcenter/qvk_help_center_session_cache.h"
#include "velmaro/requests/qvk_create_request.h"
#include "velmaro/requests/qvk_request_provider.h"
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAreArray;
using Error = quorvel::platform::Error;
using Names = std::vector<std::string>;

constexpr const char* kHttp = "com.quorvel.sdk";
constexpr const char* kTransport = quorvel::platform::TransportError::kDomain;
constexpr const char* kJson = AnswerParsing::kJsonErrorDomain;

// One answer of a callback, reduced to what the matrix compares.
struct Answer {
  bool result = false;
  std::optional<Error> error;
};
using Recorder = std::function<void(Answer)>;

struct Providers {
  QVKHelpCenterProvider helpCenter;
  QVKRequestProvider requests;
  QVKUploadProvider uploads;
  QVKAttachmentProvider attachments;
  std::string serviceUrl;
};

// What an operation answers: an error (domain and code) or, with no domain,
// a result; and the notifications it posts on the way.
struct Expected {
  const char* domain;
  long code;
  Names notifications;
};

struct OperationRow {
  const char* label;
  const char* pathPrefix;
  std::function<void(Providers&, Recorder)> start;
  Names failedNotifications;  // on an HTTP or transport failure
  Expected malformed;         // on a 200 whose body is cut off
  friend void PrintTo(const OperationRow& row, std::ostream* out) { *out << row.label; }
};

// A callback of any provider result type that records into `record`.
auto into(Recorder record) {
  return [record](auto result, std::optional<Error> error) {
    record({result.has_value(), std::move(error)});
  };
}

enum class FaultKind { status500, unauthorized, dropped, timedOut, malformed, oversize };

struct FaultColumn {
  const char* label;
  FaultKind kind;
  const char* json;  // the fault's fields, without braces
  const char* domain;
  long code;
  friend void PrintTo(const FaultColumn& column, std::ostream* out) { *out << column.label; }
};

// The core's request time-out is short here; the delay outlasts it, also for
// transfers, which end after a second without progress.
constexpr std::chrono::milliseconds kRequestTimeout{2000};

const FaultColumn kFaults[] = {
    {"status500", FaultKind::status500, R"("status":500)", kHttp, 500},
    {"unauthorized", FaultKind::unauthorized, R"("status":401)", kHttp, 401},
    {"dropped", FaultKind::dropped, R"("drop":true)", kTransport, -1005},
    {"timedOut", FaultKind::timedOut, R"("delay_ms":4000)", kTransport, -1001},
    {"malformed", FaultKind::malformed, R"("malformed":true)", nullptr, 0},
    {"oversize", FaultKind::oversize, R"("oversize":true)", kTransport, -1103},
};

class ProviderFaultMatrixTest
    : public ProviderFixture,
      public ::testing::WithParamInterface<std::tuple<OperationRow, FaultColumn>> {
 protected:
  ProviderFaultMatrixTest() : ProviderFixture("QV") {
    requestTimeout_ = kRequestTimeout;
    maxResponseBytes_ = 1024 * 1024;
  }

  // Faults come from the emulator itself: a relay in between would turn a
  // dropped connection into a 502.
  std::string serviceUrl() const override { return emulator_->url(); }
  void resetState() override {
    QVKHelpCenterSessionCache::resetForTesting();
    QVKTicketFormsProviderCacher::resetForTesting();
    QVKETag::resetForTesting();
    emulator_->control("PUT", "settings", R"({"conversations":true,"ticket_forms":true})");
  }
  void startProviders() override {
    providers_.reset(new Providers{QVKHelpCenterProvider(core_), QVKRequestProvider(core_),
                                   QVKUploadProvider(core_), QVKAttachmentProvider(core_),
                                   serviceUrl()});
  }
  void stopProviders() override { providers_.reset(); }

  void inject(const std::string& fault, const std::string& pathPrefix) {
    const std::string body = R"({"count":1,"path_prefix":")" + pathPrefix + R"(",)" + fault + "}";
    ASSERT_EQ(emulator_->control("POST", "faults", body).status / 100, 2);
  }

  // Starts the operation and waits for its answer, then a little longer for
  // a second one that must not come.
  std::vector<Answer> run(const OperationRow& row) {
    auto answers = std::make_shared<std::vector<Answer>>();
    row.start(*providers_, [answers](Answer a) { answers->push_back(std::move(a)); });
    pumpUntil([&] { return !answers->empty(); }, kRequestTimeout * 4);
    settle(std::chrono::milliseconds(200));
    return *answers;
  }

  // The names posted, less the unauthorized notice, which the dispatcher
  // posts for every 401 whatever the operation.
  Names postedNames() const {
    Names names;
    for (const auto& n : notifications_)
      if (n.name != "QVKUnauthorized") names.push_back(n.name);
    return names;
  }

  std::unique_ptr<Providers> providers_;
};

TEST_P(ProviderFaultMatrixTest, AnswersOnceWithTheFailureAndKeepsNothing) {
  const auto& [row, fault] = GetParam();
  const bool malformed = fault.kind == FaultKind::malformed;
  const Expected expected =
      malformed ? row.malformed : Expected{fault.domain, fault.code, row.failedNotifications};
  inject(fault.json, row.pathPrefix);
  notifications_.clear();

  const auto answers = run(row);
  ASSERT_EQ(answers.size(), 1u);
  if (expected.domain == nullptr) {
    EXPECT_TRUE(answers[0].result);
    EXPECT_FALSE(answers[0].error) << answers[0].error->debugDescription();
  } else {
    ASSERT_TRUE(answers[0].error);
    EXPECT_EQ(answers[0].error->domain, expected.domain) << answers[0].error->debugDescription();
    EXPECT_EQ(answers[0].error->code, expected.code) << answers[0].error->debugDescription();
  }
  EXPECT_THAT(postedNames(), ElementsAreArray(expected.notifications));
  // A notification that carries an error carries the one answered.
  for (const auto& n : notifications_) {
    if (auto error = errorOf(n)) {
      EXPECT_EQ(error, answers[0].error) << n.name;
    }
  }

  // Had anything of the failed answer been kept, the next call would be
  // answered from it rather than by the service's 503.
  inject(R"("status":503)", row.pathPrefix);
  const auto next = run(row);
  ASSERT_EQ(next.size(), 1u);
  ASSERT_TRUE(next[0].error);
  EXPECT_EQ(next[0].error->code, 503) << next[0].error->debugDescription();
}

QVKHelpCenterArticle anArticle() {
  QVKHelpCenterArticle article;
  article.identifier = 360000030001;
  return article;
}

QVKCreateRequest aNewRequest() {
  QVKCreateRequest request;
  request.subject = "Printer";
  request.requestDescription = "It does not print.";
  return request;
}

// What an answer that does not parse gives: Help Center answers read as
// empty records; request answers are a JSON error; bodies nobody reads pass.
const Expected kEmptyButFine{nullptr, 0, {}};
Expected jsonError(Names notifications) {
  return {kJson, AnswerParsing::kJsonErrorCode, std::move(notifications)};
}
Expected success(Names notifications) {
  return {nullptr, 0, std::move(notifications)};
}

const char* const kHelpCenter = "/api/v2/help_center/";
const char* const kRequests = "/api/mobile/requests";

const OperationRow kOperations[] = {
    {"categories",
     kHelpCenter,
     [](Providers& p, Recorder r) { p.helpCenter.getCategoriesWithLocale("en-us", into(r)); },
     {"QV_HC_CategoriesStarting", "QV_HC_RequestError"},
     success({"QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"})},
    {"flatArticles",
     kHelpCenter,
     [](Providers& p, Recorder r) { p.helpCenter.getFlatArticlesWithCallback(into(r)); },
     {"QV_HC_ArticlesStarting", "QV_HC_RequestError"},
     success({"QV_HC_ArticlesStarting", "QV_HC_ArticlesUpdated"})},
    {"articleById",
     "/hc/api/mobile/",
     [](Providers& p, Recorder r) { p.helpCenter.getArticleWithId(360000030001, into(r)); },
     {"QV_HC_ArticleByIdStarting", "QV_HC_RequestError"},
     success({"QV_HC_ArticleByIdStarting", "QV_HC_ArticleByIdSuccess"})},
    {"search",
     kHelpCenter,
     [](Providers& p, Recorder r) {
       p.helpCenter.searchForArticlesUsingQuery(std::string("password"), into(r));
     },
     {"QV_HC_SearchStarting", "QV_HC_RequestError"},
     success({"QV_HC_SearchStarting", "QV_HC_SearchSuccess"})},
    {"suggestions",
     "/api/mobile/help_center",
     [](Providers& p, Recorder r) {
       auto deflection = std::make_shared<QVKHelpCenterDeflection>();
       deflection->query = "password";
       p.helpCenter.getArticleSuggestions(deflection, "en-us", into(r));
     },
     {"QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchError"},
     success({"QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchSuccess"})},
    {"attachments",
     kHelpCenter,
     [](Providers& p, Recorder r) {
       p.helpCenter.getAttachmentWithArticleId(360000030001, into(r));
     },
     {"QV_HC_AttachmentsStarting", "QV_HC_AttachmentsErrored", "QV_HC_RequestError"},
     success({"QV_HC_AttachmentsStarting", "QV_HC_AttachmentsUpdated"})},
    {"articleView",
     kHelpCenter,
     [](Providers& p, Recorder r) { p.helpCenter.submitRecordArticleView(anArticle(), into(r)); },
     {},
     kEmptyButFine},
    {"downVote",
     kHelpCenter,
     [](Providers& p, Recorder r) {
       p.helpCenter.downVoteArticleWithId(std::string("360000030001"), into(r));
     },
     {"QV_HC_DownvoteStarting", "QV_HC_DownvoteError"},
     success({"QV_HC_DownvoteStarting", "QV_HC_DownvoteSuccess"})},
    {"removeVote",
     kHelpCenter,
     [](Providers& p, Recorder r) { p.helpCenter.removeVoteWithId(std::string("7"), into(r)); },
     {"QV_HC_VoteDeleteStarting", "QV_HC_VoteDeleteError"},
     success({"QV_HC_VoteDeleteStarting", "QV_HC_VoteDeleteSuccess"})},
    {"createRequest",
     kRequests,
     [](Providers& p, Recorder r) { p.requests.createRequest(aNewRequest(), into(r)); },
     {"QVKAPI_RequestSubmissionStarting", "QVKAPI_RequestSubmissionError"},
     // The service took the request: its callback gets the dispatcher's
     // response whatever the body, so that nobody sends it again.
     success({"QVKAPI_RequestSubmissionStarting", "QVKAPI_RequestSubmissionSuccess"})},
    // A list or request that does not parse is the callback's error but
    // still counts as the fetch's success.
    {"allRequests",
     kRequests,
     [](Providers& p, Recorder r) { p.requests.getAllRequests(into(r)); },
     {"QVKAPI_RequestsStarting", "QVKAPI_RequestsError"},
     jsonError({"QVKAPI_RequestsStarting", "QVKAPI_RequestsSuccess"})},
    {"requestById",
     kRequests,
     [](Providers& p, Recorder r) { p.requests.getRequestById(std::string("101"), into(r)); },
     {"QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdError"},
     jsonError({"QVKAPI_RequestByIdStarting", "QVKAPI_RequestByIdSuccess"})},
    {"comments",
     kRequests,
     [](Providers& p, Recorder r) {
       p.requests.getCommentsWithRequestId(std::string("101"), into(r));
     },
     {"QVKAPI_CommentListStarting", "QVKAPI_CommentListError"},
     jsonError({"QVKAPI_CommentListStarting"})},
    {"addComment",
     kRequests,
     [](Providers& p, Recorder r) {
       p.requests.addComment(std::string("Hello?"), std::string("101"), into(r));
     },
     {"QVKAPI_CommentSubmissionStarting", "QVKAPI_CommentSubmissionError"},
     jsonError({"QVKAPI_CommentSubmissionStarting"})},
    // Ticket forms post nothing, and a body that does not parse gives no
    // forms rather than an error.
    {"ticketForms",
     "/api/v2/ticket_forms",
     [](Providers& p, Recorder r) { p.requests.getTicketFormWithIds({360000040001}, into(r)); },
     {},
     kEmptyButFine},
    {"upload",
     "/api/mobile/uploads",
     [](Providers& p, Recorder r) {
       p.uploads.uploadAttachment(std::string("bytes"), std::string("a.txt"),
                                  std::string("text/plain"), into(r));
     },
     {"QVKAPI_UploadAttachmentStarting", "QVKAPI_UploadAttachmentError"},
     jsonError({"QVKAPI_UploadAttachmentStarting", "QVKAPI_UploadAttachmentError"})},
    {"deleteUpload",
     "/api/mobile/uploads",
     [](Providers& p, Recorder r) { p.uploads.deleteUpload(std::string("abc"), into(r)); },
     {"QVKAPI_DeleteUploadStarting", "QVKAPI_DeleteUploadError"},
     success({"QVKAPI_DeleteUploadStarting", "QVKAPI_DeleteUploadSuccess"})},
    {"download",
     "/attachments/",
     [](Providers& p, Recorder r) {
       p.attachments.getAttachmentForUrl(p.serviceUrl + "/attachments/token/abc", into(r));
     },
     {},
     kEmptyButFine},
};

INSTANTIATE_TEST_SUITE_P(Matrix, ProviderFaultMatrixTest,
                         ::testing::Combine(::testing::ValuesIn(kOperations),
                                            ::testing::ValuesIn(kFaults)),
                         [](const auto& param) {
                           return std::string(std::get<0>(param.param).label) + "_" +
                                  std::get<1>(param.param).label;
                         });

}  // namespace
}  // namespace velmaro::testing
