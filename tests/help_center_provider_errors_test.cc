#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/help_center_provider_fixture.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

// Faults are injected by the emulator itself, so these tests talk to it
// directly: a relay in between would turn a dropped connection into a 502.
class HelpCenterProviderErrorsTest : public HelpCenterProviderTest {
 protected:
  std::string serviceUrl() const override { return emulator_->url(); }

  void injectFault(const std::string& fault, const std::string& pathPrefix) {
    const std::string body = R"({"count":1,"path_prefix":")" + pathPrefix + R"(",)" + fault + "}";
    ASSERT_EQ(emulator_->control("POST", "faults", body).status / 100, 2);
  }

  // The callback's single answer must be an error, and each failure
  // notification (all but the first, the start) must carry it.
  void expectAnsweredAndAnnounced(const std::optional<Error>& error, long code) {
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, code) << error->debugDescription();
    for (std::size_t i = 1; i < notifications_.size(); ++i) {
      EXPECT_EQ(errorOf(notifications_[i]), error) << notifications_[i].name;
    }
  }
};

struct FaultCase {
  const char* name;
  const char* fault;
  long code;
};

void PrintTo(const FaultCase& c, std::ostream* os) {
  *os << c.name;
}

class HelpCenterProviderFaultTest : public HelpCenterProviderErrorsTest,
                                    public ::testing::WithParamInterface<FaultCase> {};

TEST_P(HelpCenterProviderFaultTest, AFailedListIsAnsweredAndAnnounced) {
  injectFault(GetParam().fault, "/api/v2/help_center/");
  auto answers = list<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithLocale("en-us", std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  EXPECT_FALSE((*answers)[0].result);
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_CategoriesStarting", "QV_HC_RequestError"));
  expectAnsweredAndAnnounced((*answers)[0].error, GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Faults, HelpCenterProviderFaultTest,
                         ::testing::Values(FaultCase{"status500", R"("status":500)", 500},
                                           FaultCase{"dropped", R"("drop":true)", -1005}),
                         [](const auto& param) { return std::string(param.param.name); });

// Operations whose failure has notifications of its own.
struct OwnFailureCase {
  const char* label;
  const char* pathPrefix;
  std::function<void(QVKHelpCenterProvider&, ProviderCallback<std::size_t>)> start;
  std::vector<std::string> notifications;
};

void PrintTo(const OwnFailureCase& c, std::ostream* os) {
  *os << c.label;
}

// The number of records, so that cases of any record type fit one table.
template <class Record>
QVKHelpCenterCallback<Record> counting(ProviderCallback<std::size_t> cb) {
  return [cb](std::optional<std::vector<Record>> items, auto error) {
    cb(items ? std::optional<std::size_t>(items->size()) : std::nullopt, std::move(error));
  };
}

class HelpCenterOwnFailureTest : public HelpCenterProviderErrorsTest,
                                 public ::testing::WithParamInterface<OwnFailureCase> {};

TEST_P(HelpCenterOwnFailureTest, AFailureIsAnnouncedUnderTheOperationsOwnNames) {
  injectFault(R"("status":500)", GetParam().pathPrefix);
  auto answers = call<std::size_t>([&](auto cb) { GetParam().start(*provider_, std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  EXPECT_FALSE((*answers)[0].result);
  EXPECT_THAT(notificationNames(), ElementsAreArray(GetParam().notifications));
  expectAnsweredAndAnnounced((*answers)[0].error, 500);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, HelpCenterOwnFailureTest,
    ::testing::Values(
        OwnFailureCase{
            "attachments",
            "/api/v2/help_center/",
            [](auto& p, auto cb) {
              p.getAttachmentWithArticleId(360000030001, counting<QVKHelpCenterAttachment>(cb));
            },
            {"QV_HC_AttachmentsStarting", "QV_HC_AttachmentsErrored", "QV_HC_RequestError"}},
        OwnFailureCase{"suggestions",
                       "/api/mobile/help_center",
                       [](auto& p, auto cb) {
                         auto deflection = std::make_shared<QVKHelpCenterDeflection>();
                         deflection->query = "password";
                         p.getArticleSuggestions(deflection, "en-us",
                                                 counting<QVKHelpCenterSimpleArticle>(cb));
                       },
                       {"QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchError"}},
        OwnFailureCase{"downVote",
                       "/api/v2/help_center/",
                       [](auto& p, auto cb) {
                         p.downVoteArticleWithId(std::string("360000030001"),
                                                 counting<QVKHelpCenterArticleVote>(cb));
                       },
                       {"QV_HC_DownvoteStarting", "QV_HC_DownvoteError"}}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(HelpCenterProviderErrorsTest, AMalformedBodyOnSuccessAnswersAnEmptyList) {
  injectFault(R"("malformed":true)", "/api/v2/help_center/");
  auto answers = list<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithLocale("en-us", std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_THAT(*(*answers)[0].result, IsEmpty());
  EXPECT_FALSE((*answers)[0].error);
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"));
}

// Kept, the unreadable answer would be served from the HTTP cache for its
// whole lifetime.
TEST_F(HelpCenterProviderErrorsTest, AMalformedBodyIsNotServedAgainFromTheCache) {
  injectFault(R"("malformed":true)", "/api/v2/help_center/");
  auto getCategories = [&](auto cb) { provider_->getCategoriesWithLocale("en-us", std::move(cb)); };
  list<QVKHelpCenterCategory>(getCategories);
  auto answers = list<QVKHelpCenterCategory>(getCategories);
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_THAT(*(*answers)[0].result, ::testing::Not(IsEmpty()));
}

}  // namespace
}  // namespace velmaro::testing
