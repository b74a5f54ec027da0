#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/help_center_provider_fixture.h"

namespace velmaro::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Faults are injected by the emulator itself, so these tests talk to it
// directly: a relay in between would turn a dropped connection into a 502.
class HelpCenterProviderErrorsTest : public HelpCenterProviderTest {
 protected:
  std::string serviceUrl() const override { return emulator_->url(); }

  void injectFault(const std::string& fault) {
    const std::string body = R"({"count":1,"path_prefix":"/api/v2/help_center/",)" + fault + "}";
    ASSERT_EQ(emulator_->control("POST", "faults", body).status / 100, 2);
  }

  // Each failure notification must carry the error the callback got.
  void expectErrorPayloads(const Error& error, std::size_t fromIndex) {
    for (std::size_t i = fromIndex; i < notifications_.size(); ++i) {
      const auto carried = errorOf(notifications_[i]);
      ASSERT_TRUE(carried) << notifications_[i].name;
      EXPECT_EQ(*carried, error) << notifications_[i].name;
    }
  }
};

struct FaultCase {
  const char* name;
  const char* fault;
  long domainCode;  // expected error code
};

void PrintTo(const FaultCase& c, std::ostream* os) {
  *os << c.name;
}

class HelpCenterProviderFaultTest : public HelpCenterProviderErrorsTest,
                                    public ::testing::WithParamInterface<FaultCase> {};

TEST_P(HelpCenterProviderFaultTest, AFailedListIsAnsweredAndAnnounced) {
  injectFault(GetParam().fault);
  auto answers = call<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithLocale("en-us", std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  EXPECT_FALSE((*answers)[0].result);
  ASSERT_TRUE((*answers)[0].error);
  EXPECT_EQ((*answers)[0].error->code, GetParam().domainCode)
      << (*answers)[0].error->debugDescription();
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_CategoriesStarting", "QV_HC_RequestError"));
  expectErrorPayloads(*(*answers)[0].error, 1);
}

INSTANTIATE_TEST_SUITE_P(Faults, HelpCenterProviderFaultTest,
                         ::testing::Values(FaultCase{"status500", R"("status":500)", 500},
                                           FaultCase{"dropped", R"("drop":true)", -1005}),
                         [](const auto& param) { return std::string(param.param.name); });

TEST_F(HelpCenterProviderErrorsTest, AMalformedBodyOnSuccessAnswersAnEmptyList) {
  injectFault(R"("malformed":true)");
  auto answers = call<QVKHelpCenterCategory>(
      [&](auto cb) { provider_->getCategoriesWithLocale("en-us", std::move(cb)); });
  settle();
  ASSERT_EQ(answers->size(), 1u);
  ASSERT_TRUE((*answers)[0].result);
  EXPECT_THAT(*(*answers)[0].result, IsEmpty());
  EXPECT_FALSE((*answers)[0].error);
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_CategoriesStarting", "QV_HC_CategoriesUpdated"));
}

TEST_F(HelpCenterProviderErrorsTest, FailedAttachmentsAndSuggestionsUseTheirOwnNotifications) {
  injectFault(R"("status":500)");
  auto attachments = call<QVKHelpCenterAttachment>(
      [&](auto cb) { provider_->getAttachmentWithArticleId(kFirstArticle, std::move(cb)); });
  settle();
  ASSERT_TRUE((*attachments)[0].error);
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_AttachmentsStarting",
                                               "QV_HC_AttachmentsErrored", "QV_HC_RequestError"));
  expectErrorPayloads(*(*attachments)[0].error, 1);

  notifications_.clear();
  ASSERT_EQ(emulator_
                    ->control("POST", "faults",
                              R"({"count":1,"status":500,"path_prefix":"/api/mobile/help_center"})")
                    .status /
                100,
            2);
  auto deflection = std::make_shared<QVKHelpCenterDeflection>();
  deflection->query = "password";
  auto suggestions = call<QVKHelpCenterSimpleArticle>(
      [&](auto cb) { provider_->getArticleSuggestions(deflection, "en-us", std::move(cb)); });
  settle();
  ASSERT_TRUE((*suggestions)[0].error);
  EXPECT_THAT(notificationNames(),
              ElementsAre("QV_HC_DeflectionSearchStarting", "QV_HC_DeflectionSearchError"));
  expectErrorPayloads(*(*suggestions)[0].error, 1);
}

TEST_F(HelpCenterProviderErrorsTest, AFailedVoteAnswersTheErrorAndPostsTheVoteError) {
  injectFault(R"("status":500)");
  auto down = call<QVKHelpCenterArticleVote>([&](auto cb) {
    provider_->downVoteArticleWithId(std::to_string(kFirstArticle), std::move(cb));
  });
  settle();
  ASSERT_EQ(down->size(), 1u);
  ASSERT_TRUE((*down)[0].error);
  EXPECT_EQ((*down)[0].error->code, 500);
  EXPECT_THAT(notificationNames(), ElementsAre("QV_HC_DownvoteStarting", "QV_HC_DownvoteError"));
  expectErrorPayloads(*(*down)[0].error, 1);
}

}  // namespace
}  // namespace velmaro::testing
