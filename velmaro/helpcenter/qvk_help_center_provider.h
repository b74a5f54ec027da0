#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/platform/error.h"
#include "quorvel/quorvel.h"
#include "velmaro/core/qvk_dispatcher_response.h"
#include "velmaro/core/qvk_provider.h"
#include "velmaro/helpcenter/help_center_callbacks.h"
#include "velmaro/helpcenter/help_center_category_view_model_container.h"
#include "velmaro/helpcenter/help_center_notifications.h"
#include "velmaro/helpcenter/qvk_help_center_article.h"
#include "velmaro/helpcenter/qvk_help_center_article_vote.h"
#include "velmaro/helpcenter/qvk_help_center_attachment.h"
#include "velmaro/helpcenter/qvk_help_center_category.h"
#include "velmaro/helpcenter/qvk_help_center_deflection.h"
#include "velmaro/helpcenter/qvk_help_center_flat_article.h"
#include "velmaro/helpcenter/qvk_help_center_overview_content_model.h"
#include "velmaro/helpcenter/qvk_help_center_search.h"
#include "velmaro/helpcenter/qvk_help_center_section.h"
#include "velmaro/helpcenter/qvk_help_center_simple_article.h"
#include "velmaro/helpcenter/qvk_list_article_query.h"

namespace velmaro {

// Any provider that can vote an article up: the user interface takes the
// provider through this, so that another one can stand in for it.
template <class T>
concept HelpCenterProviderProtocol =
    requires(T& provider, std::optional<std::string> articleId,
             QVKHelpCenterCallback<QVKHelpCenterArticleVote> callback) {
  provider.upVoteArticle(articleId, callback);
};

// The Help Center's entry point: every operation sends one request through
// the API dispatcher and answers its callback, and posts its notifications
// (sender: this provider), asynchronously on the core library's main queue.
// Operations may be called from any thread.
//
// The provider keeps nothing between calls. An operation in flight holds only
// the core object and the provider's address (as the notifications' sender),
// never the provider itself, so a provider may be destroyed with calls in
// flight.
class QVKHelpCenterProvider : public QVKProvider {
 public:
  QVKHelpCenterProvider();
  explicit QVKHelpCenterProvider(std::shared_ptr<quorvel::Quorvel> quorvel);
  static QVKHelpCenterProvider initWithQuorvel(std::shared_ptr<quorvel::Quorvel> quorvel) {
    return QVKHelpCenterProvider(std::move(quorvel));
  }

  void getCategoriesWithCallback(QVKHelpCenterCallback<QVKHelpCenterCategory> cb);
  void getCategoriesWithLocale(std::string locale, QVKHelpCenterCallback<QVKHelpCenterCategory> cb);

  void getSectionsWithCategoryId(std::int64_t categoryId,
                                 QVKHelpCenterCallback<QVKHelpCenterSection> cb);
  void getSectionsWithCategoryId(std::int64_t categoryId, std::string locale,
                                 QVKHelpCenterCallback<QVKHelpCenterSection> cb);

  // Without labels: an empty list, sent as an empty label_names value.
  void getArticlesWithSectionId(std::int64_t sectionId,
                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void getArticlesWithSectionId(std::int64_t sectionId,
                                std::optional<std::vector<std::string>> labels,
                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void getArticlesWithSectionId(std::int64_t sectionId,
                                std::optional<std::vector<std::string>> labels, std::string locale,
                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb);

  // The search object gains the side-loads "users", "categories" and
  // "sections" on every call, so it is shared with the caller.
  void searchArticles(std::shared_ptr<QVKHelpCenterSearch> search,
                      QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void searchArticles(std::shared_ptr<QVKHelpCenterSearch> search, std::string locale,
                      QVKHelpCenterCallback<QVKHelpCenterArticle> cb);

  void searchForArticlesUsingQuery(std::optional<std::string> query,
                                   QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void searchForArticlesUsingQuery(std::optional<std::string> query, std::string locale,
                                   QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void searchForArticlesUsingQuery(std::optional<std::string> query,
                                   std::optional<std::vector<std::string>> labels,
                                   QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  // The locale argument is not used: the locale is resolved again.
  void searchForArticlesUsingQuery(std::optional<std::string> query,
                                   std::optional<std::vector<std::string>> labels,
                                   std::string locale,
                                   QVKHelpCenterCallback<QVKHelpCenterArticle> cb);

  void getArticlesByLabels(std::optional<std::vector<std::string>> labels,
                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void getArticlesByLabels(std::optional<std::vector<std::string>> labels, std::string locale,
                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb);

  // With a callback, the article's view is recorded once it is answered.
  void getArticleWithId(std::int64_t articleId, QVKHelpCenterCallback<QVKHelpCenterArticle> cb);
  void getArticleWithId(std::int64_t articleId, std::string locale,
                        QVKHelpCenterCallback<QVKHelpCenterArticle> cb);

  void getArticleSuggestions(std::shared_ptr<QVKHelpCenterDeflection> deflection,
                             QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb);
  void getArticleSuggestions(std::shared_ptr<QVKHelpCenterDeflection> deflection,
                             std::string locale,
                             QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb);

  void getSectionWithId(std::int64_t sectionId, QVKHelpCenterCallback<QVKHelpCenterSection> cb);
  void getSectionWithId(std::int64_t sectionId, std::string locale,
                        QVKHelpCenterCallback<QVKHelpCenterSection> cb);

  void getCategoryWithId(std::int64_t categoryId, QVKHelpCenterCallback<QVKHelpCenterCategory> cb);
  void getCategoryWithId(std::int64_t categoryId, std::string locale,
                         QVKHelpCenterCallback<QVKHelpCenterCategory> cb);

  // Page 1, 100 per page.
  void getFlatArticlesWithCallback(QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb);
  void getFlatArticles(QVKListArticleQuery query,
                       QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb);
  void getFlatArticlesWithLocale(std::string locale, std::int64_t page, std::int64_t perPage,
                                 QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb);

  void getHelpCenterOverviewWithHelpCenterOverviewModel(QVKHelpCenterOverviewContentModel model,
                                                        QVKHelpCenterCategoriesCallback cb);
  void getAttachmentWithArticleId(std::int64_t articleId,
                                  QVKHelpCenterCallback<QVKHelpCenterAttachment> cb);
  void submitRecordArticleView(std::optional<QVKHelpCenterArticle> article,
                               QVKHelpCenterGenericCallback cb);

  // With article voting disabled the callback is answered twice: first with
  // error 2001 ("com.quorvel.support"), then with the vote request's outcome.
  void upVoteArticleWithId(std::optional<std::string> articleId,
                           QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb);
  // HelpCenterProviderProtocol's name for upVoteArticleWithId.
  void upVoteArticle(std::optional<std::string> articleId,
                     QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
    upVoteArticleWithId(std::move(articleId), std::move(cb));
  }
  void downVoteArticleWithId(std::optional<std::string> articleId,
                             QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb);
  void removeVoteWithId(std::optional<std::string> voteId, QVKHelpCenterGenericCallback cb);

  // Notification names (values equal to the names).
  static constexpr const char* QV_HC_CategoriesStarting = velmaro::QV_HC_CategoriesStarting;
  static constexpr const char* QV_HC_CategoriesUpdated = velmaro::QV_HC_CategoriesUpdated;
  static constexpr const char* QV_HC_SectionsStarting = velmaro::QV_HC_SectionsStarting;
  static constexpr const char* QV_HC_SectionsUpdated = velmaro::QV_HC_SectionsUpdated;
  static constexpr const char* QV_HC_ArticlesStarting = velmaro::QV_HC_ArticlesStarting;
  static constexpr const char* QV_HC_ArticlesUpdated = velmaro::QV_HC_ArticlesUpdated;
  static constexpr const char* QV_HC_SearchStarting = velmaro::QV_HC_SearchStarting;
  static constexpr const char* QV_HC_SearchSuccess = velmaro::QV_HC_SearchSuccess;
  static constexpr const char* QV_HC_AttachmentsStarting = velmaro::QV_HC_AttachmentsStarting;
  static constexpr const char* QV_HC_AttachmentsUpdated = velmaro::QV_HC_AttachmentsUpdated;
  static constexpr const char* QV_HC_AttachmentsErrored = velmaro::QV_HC_AttachmentsErrored;
  static constexpr const char* QV_HC_ArticleByIdStarting = velmaro::QV_HC_ArticleByIdStarting;
  static constexpr const char* QV_HC_ArticleByIdSuccess = velmaro::QV_HC_ArticleByIdSuccess;
  static constexpr const char* QV_HC_SectionByIdStarting = velmaro::QV_HC_SectionByIdStarting;
  static constexpr const char* QV_HC_SectionByIdSuccess = velmaro::QV_HC_SectionByIdSuccess;
  static constexpr const char* QV_HC_CategoryByIdStarting = velmaro::QV_HC_CategoryByIdStarting;
  static constexpr const char* QV_HC_CategoryByIdSuccess = velmaro::QV_HC_CategoryByIdSuccess;
  static constexpr const char* QV_HC_DeflectionSearchStarting =
      velmaro::QV_HC_DeflectionSearchStarting;
  static constexpr const char* QV_HC_DeflectionSearchSuccess =
      velmaro::QV_HC_DeflectionSearchSuccess;
  static constexpr const char* QV_HC_DeflectionSearchError = velmaro::QV_HC_DeflectionSearchError;
  static constexpr const char* QV_HC_UpvoteStarting = velmaro::QV_HC_UpvoteStarting;
  static constexpr const char* QV_HC_UpvoteSuccess = velmaro::QV_HC_UpvoteSuccess;
  static constexpr const char* QV_HC_UpvoteError = velmaro::QV_HC_UpvoteError;
  static constexpr const char* QV_HC_DownvoteStarting = velmaro::QV_HC_DownvoteStarting;
  static constexpr const char* QV_HC_DownvoteSuccess = velmaro::QV_HC_DownvoteSuccess;
  static constexpr const char* QV_HC_DownvoteError = velmaro::QV_HC_DownvoteError;
  static constexpr const char* QV_HC_VoteDeleteStarting = velmaro::QV_HC_VoteDeleteStarting;
  static constexpr const char* QV_HC_VoteDeleteSuccess = velmaro::QV_HC_VoteDeleteSuccess;
  static constexpr const char* QV_HC_VoteDeleteError = velmaro::QV_HC_VoteDeleteError;
  static constexpr const char* QV_HC_RequestError = velmaro::QV_HC_RequestError;
  static constexpr const char* QV_HC_CategorySelected = velmaro::QV_HC_CategorySelected;
  static constexpr const char* QV_HC_SectionSelected = velmaro::QV_HC_SectionSelected;
  static constexpr const char* QV_HC_SectionArticle = velmaro::QV_HC_SectionArticle;

  // The error of the article-voting gate.
  static constexpr const char* kVotingErrorDomain = "com.quorvel.support";
  static constexpr long kVotingDisabledCode = 2001;
  static constexpr const char* kVotingDisabledMessage =
      "Help Center Article Voting is disabled, can't execute network request";
};

static_assert(HelpCenterProviderProtocol<QVKHelpCenterProvider>);

}  // namespace velmaro
