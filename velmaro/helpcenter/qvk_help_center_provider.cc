#include "velmaro/helpcenter/qvk_help_center_provider.h"

#include <utility>

#include "velmaro/helpcenter/help_center_article_operations.h"
#include "velmaro/helpcenter/help_center_list_operations.h"
#include "velmaro/helpcenter/help_center_search_operations.h"
#include "velmaro/helpcenter/help_center_vote_operations.h"
#include "velmaro/helpcenter/qvk_help_center_provider_context.h"

namespace velmaro {

namespace {

using Context = QVKHelpCenterProviderContext;
using Lists = HelpCenterListOperations;
using Searches = HelpCenterSearchOperations;
using Articles = HelpCenterArticleOperations;
using Votes = HelpCenterVoteOperations;

Context contextOf(const QVKHelpCenterProvider& provider) {
  return Context(provider.quorvel, &provider);
}

// Every convenience form: resolve the locale, then run the explicit form's
// operation with it (a locale that cannot be resolved goes into paths as
// empty text). The continuation holds a copy of the context, never the
// provider, which may be gone by the time the settings answer.
template <class... Params, class... Args>
void withLocale(const QVKHelpCenterProvider& provider,
                void (*operation)(const Context&, const std::string&, Params...), Args&&... args) {
  const auto ctx = contextOf(provider);
  ctx.localeForRequest(
      [ctx, operation, ... args = std::forward<Args>(args)](std::optional<std::string> locale) {
        operation(ctx, locale.value_or(""), args...);
      });
}

}  // namespace

QVKHelpCenterProvider::QVKHelpCenterProvider() : QVKProvider() {}

QVKHelpCenterProvider::QVKHelpCenterProvider(std::shared_ptr<quorvel::Quorvel> quorvel)
    : QVKProvider(std::move(quorvel)) {}

void QVKHelpCenterProvider::getCategoriesWithCallback(
    QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  withLocale(*this, &Lists::categories, std::move(cb));
}

void QVKHelpCenterProvider::getCategoriesWithLocale(
    std::string locale, QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  Lists::categories(contextOf(*this), locale, std::move(cb));
}

void QVKHelpCenterProvider::getSectionsWithCategoryId(
    std::int64_t categoryId, QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  withLocale(*this, &Lists::sections, categoryId, std::move(cb));
}

void QVKHelpCenterProvider::getSectionsWithCategoryId(
    std::int64_t categoryId, std::string locale, QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  Lists::sections(contextOf(*this), locale, categoryId, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  getArticlesWithSectionId(sectionId, std::vector<std::string>{}, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, std::optional<std::vector<std::string>> labels,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Lists::articlesOfSection, sectionId, std::move(labels), std::move(cb));
}

void QVKHelpCenterProvider::getArticlesWithSectionId(
    std::int64_t sectionId, std::optional<std::vector<std::string>> labels, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Lists::articlesOfSection(contextOf(*this), locale, sectionId, labels, std::move(cb));
}

void QVKHelpCenterProvider::searchArticles(std::shared_ptr<QVKHelpCenterSearch> search,
                                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Searches::search, std::move(search), std::move(cb));
}

void QVKHelpCenterProvider::searchArticles(std::shared_ptr<QVKHelpCenterSearch> search,
                                           std::string locale,
                                           QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Searches::search(contextOf(*this), locale, search, std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Searches::searchByQuery, std::move(query), std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Searches::searchByQuery(contextOf(*this), locale, query, std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::optional<std::vector<std::string>> labels,
    QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Searches::searchByQueryAndLabels, std::move(query), std::move(labels),
             std::move(cb));
}

void QVKHelpCenterProvider::searchForArticlesUsingQuery(
    std::optional<std::string> query, std::optional<std::vector<std::string>> labels,
    std::string locale, QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Searches::searchByQueryAndLabels(contextOf(*this), locale, query, labels, std::move(cb));
}

void QVKHelpCenterProvider::getArticlesByLabels(std::optional<std::vector<std::string>> labels,
                                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Lists::articlesByLabels, std::move(labels), std::move(cb));
}

void QVKHelpCenterProvider::getArticlesByLabels(std::optional<std::vector<std::string>> labels,
                                                std::string locale,
                                                QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Lists::articlesByLabels(contextOf(*this), locale, labels, std::move(cb));
}

void QVKHelpCenterProvider::getArticleWithId(std::int64_t articleId,
                                             QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  withLocale(*this, &Articles::articleById, articleId, std::move(cb));
}

void QVKHelpCenterProvider::getArticleWithId(std::int64_t articleId, std::string locale,
                                             QVKHelpCenterCallback<QVKHelpCenterArticle> cb) {
  Articles::articleById(contextOf(*this), locale, articleId, std::move(cb));
}

void QVKHelpCenterProvider::getArticleSuggestions(
    std::shared_ptr<QVKHelpCenterDeflection> deflection,
    QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
  withLocale(*this, &Searches::suggestions, std::move(deflection), std::move(cb));
}

void QVKHelpCenterProvider::getArticleSuggestions(
    std::shared_ptr<QVKHelpCenterDeflection> deflection, std::string locale,
    QVKHelpCenterCallback<QVKHelpCenterSimpleArticle> cb) {
  Searches::suggestions(contextOf(*this), locale, deflection, std::move(cb));
}

void QVKHelpCenterProvider::getSectionWithId(std::int64_t sectionId,
                                             QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  withLocale(*this, &Lists::sectionById, sectionId, std::move(cb));
}

void QVKHelpCenterProvider::getSectionWithId(std::int64_t sectionId, std::string locale,
                                             QVKHelpCenterCallback<QVKHelpCenterSection> cb) {
  Lists::sectionById(contextOf(*this), locale, sectionId, std::move(cb));
}

void QVKHelpCenterProvider::getCategoryWithId(std::int64_t categoryId,
                                              QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  withLocale(*this, &Lists::categoryById, categoryId, std::move(cb));
}

void QVKHelpCenterProvider::getCategoryWithId(std::int64_t categoryId, std::string locale,
                                              QVKHelpCenterCallback<QVKHelpCenterCategory> cb) {
  Lists::categoryById(contextOf(*this), locale, categoryId, std::move(cb));
}

void QVKHelpCenterProvider::getFlatArticlesWithCallback(
    QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  getFlatArticles(QVKListArticleQuery(100, 1), std::move(cb));
}

void QVKHelpCenterProvider::getFlatArticles(QVKListArticleQuery query,
                                            QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  withLocale(*this, &Lists::flatArticles, query.page(), query.perPage(), std::move(cb));
}

void QVKHelpCenterProvider::getFlatArticlesWithLocale(
    std::string locale, std::int64_t page, std::int64_t perPage,
    QVKHelpCenterCallback<QVKHelpCenterFlatArticle> cb) {
  Lists::flatArticles(contextOf(*this), locale, page, perPage, std::move(cb));
}

void QVKHelpCenterProvider::getHelpCenterOverviewWithHelpCenterOverviewModel(
    QVKHelpCenterOverviewContentModel model, QVKHelpCenterCategoriesCallback cb) {
  Articles::overview(contextOf(*this), model, std::move(cb));
}

void QVKHelpCenterProvider::getAttachmentWithArticleId(
    std::int64_t articleId, QVKHelpCenterCallback<QVKHelpCenterAttachment> cb) {
  Articles::attachments(contextOf(*this), articleId, std::move(cb));
}

void QVKHelpCenterProvider::submitRecordArticleView(std::optional<QVKHelpCenterArticle> article,
                                                    QVKHelpCenterGenericCallback cb) {
  Articles::recordArticleView(contextOf(*this), article, std::move(cb));
}

void QVKHelpCenterProvider::upVoteArticleWithId(
    std::optional<std::string> articleId, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
  Votes::vote(contextOf(*this), articleId, Votes::kUpVote, std::move(cb));
}

void QVKHelpCenterProvider::downVoteArticleWithId(
    std::optional<std::string> articleId, QVKHelpCenterCallback<QVKHelpCenterArticleVote> cb) {
  Votes::vote(contextOf(*this), articleId, Votes::kDownVote, std::move(cb));
}

void QVKHelpCenterProvider::removeVoteWithId(std::optional<std::string> voteId,
                                             QVKHelpCenterGenericCallback cb) {
  Votes::removeVote(contextOf(*this), voteId, std::move(cb));
}

}  // namespace velmaro
